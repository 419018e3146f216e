#include "settings/new_application.h"
#include "tests/support/testing.h"

namespace drevix::test {
namespace {

TEST(NewApplication, NameAndSignatureComeFromWhatIsThere) {
    const ScratchFolder folder;
    const std::string app = folder.Path("Tool.APP");
    const std::string list = app + "/Contents/Info.plist";
    fs::create_directories(app + "/Contents");
    const auto signature = [](const std::string &text) {
        return "<plist><dict><key>CFBundleSignature</key>" + text + "</dict></plist>";
    };
    WriteWhole(folder.Path("a.desktop"), "[Desktop Entry]\nType=Application\nName=Shown\nName[de]=Gezeigt\n");
    struct Row {
        std::string path;
        const char *fileName;
        const char *shownName;
        std::string list = {}; // what the application folder holds
        OSType signature = kNoSignature;
    };
    const std::string photo = signature("<string>8BIMxyz</string>");
    for (const Row &row : std::initializer_list<Row>{
             {app, "Tool", "Tool", photo, FourCharCode("8BIM")},
             {app + "/", "Tool", "Tool", signature("<string>\u00C4bc\u00FC</string>"),
              0x8062639F}, // in Mac OS Roman
             {app, "Tool", "Tool", signature("<string>abc</string>")},
             {app, "Tool", "Tool", signature("<integer>943868237</integer>")},
             {folder.Path("a.desktop"), "a", "Gezeigt"},
             {folder.Path("damaged.desktop"), "damaged.desktop", "damaged.desktop"},
             {"/opt/.app", ".app", ".app"},
             {"/opt/x.app.aPp///", "x.app", "x.app"},
             {"/usr/bin/xapp", "xapp", "xapp"},
             {"/", "", ""},
         }) {
        SCOPED_TRACE(row.path + row.list);
        WriteWhole(list, row.list);
        const NewApplication application = ApplicationOfPath(row.path, "de_AT.UTF-8");
        EXPECT_EQ(application.signature, row.signature);
        EXPECT_EQ(application.fileName, row.fileName);
        EXPECT_EQ(application.shownName, row.shownName);
    }
    WriteWhole(folder.Path("xml"), photo);
    ASSERT_EQ(std::system(("plistutil -i " + folder.Path("xml") + " -o " + list).c_str()), 0);
    EXPECT_EQ(ApplicationOfPath(app, "C").signature, FourCharCode("8BIM")) << "a binary list";
}

} // namespace
} // namespace drevix::test
