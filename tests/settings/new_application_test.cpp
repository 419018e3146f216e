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
    const std::pair<std::string, OSType> rows[] = {
        {signature("<string>8BIMxyz</string>"), FourCharCode("8BIM")},
        {signature("<string>\u00C4bc\u00FC</string>"), 0x8062639F}, // in Mac OS Roman
        {signature("<string>abc</string>"), kNoSignature},
        {signature("<integer>943868237</integer>"), kNoSignature},
    };
    for (const auto &[text, expected] : rows) {
        WriteWhole(list, text);
        for (const char *end : {"", "/"}) {
            const NewApplication application = ApplicationOfPath(app + end, "C");
            EXPECT_EQ(application.signature, expected) << text;
            EXPECT_EQ(application.fileName, "Tool");
            EXPECT_EQ(application.shownName, "Tool");
        }
    }
    WriteWhole(folder.Path("a.desktop"), "[Desktop Entry]\nType=Application\nName=Shown\nName[de]=Gezeigt\n");
    const std::tuple<std::string, const char *, const char *> names[] = {
        {folder.Path("a.desktop"), "a", "Gezeigt"},
        {folder.Path("damaged.desktop"), "damaged.desktop", "damaged.desktop"},
        {"/opt/.app", ".app", ".app"},
        {"/opt/x.app.aPp///", "x.app", "x.app"},
        {"/usr/bin/xapp", "xapp", "xapp"},
        {"/", "", ""}};
    for (const auto &[path, fileName, shownName] : names) {
        const NewApplication application = ApplicationOfPath(path, "de_AT.UTF-8");
        EXPECT_EQ(application.signature, kNoSignature);
        EXPECT_EQ(application.fileName, fileName);
        EXPECT_EQ(application.shownName, shownName);
    }
    WriteWhole(folder.Path("xml"), rows[0].first);
    ASSERT_EQ(std::system(("plistutil -i " + folder.Path("xml") + " -o " + list).c_str()), 0);
    EXPECT_EQ(ApplicationOfPath(app, "C").signature, FourCharCode("8BIM")) << "a binary list";
}

} // namespace
} // namespace drevix::test
