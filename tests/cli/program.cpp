#include "tests/cli/program.h"

#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_dictionary.h"
#include "settings/prefs_list.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

namespace drevix::test {
namespace {

PropertyListDictionary FactoryRecord(OSType signature, const char *name) {
    AppPrefs record = gDefaultGlobalPrefs;
    record.application = signature;
    getPascalString(name, record.appFileName.data(), kMaxFileNameLength);
    getPascalString(name, record.appName.data(), kMaxAppNameLength);
    record.device[0].action[0].command = 178;
    record.device[0].navSpeed = 77;
    PropertyListDictionary dictionary = GetAppPrefsDictionary(record);
    dictionary.Add("factory", true);
    return dictionary;
}

} // namespace

ProgramTest::ProgramTest() {
    PropertyListArrayWriter writer;
    EXPECT_EQ(writer.Open(fFolder.Path("Defaults.veltrana")), noErr);
    for (const auto &[signature, name] : {std::pair{kGlobalSignature, ""},
                                          {FourCharCode("8BIM"), "Painter"},
                                          {FourCharCode("WEBB"), "Browser"}}) {
        EXPECT_EQ(writer.Add(FactoryRecord(signature, name)), noErr);
    }
    EXPECT_EQ(writer.Finish(), noErr);
}

Result ProgramTest::Run(const std::string &line) {
    std::istringstream text(line);
    std::vector<std::string> words;
    for (std::string word; text >> word;) {
        std::ranges::replace(word, '_', ' ');
        words.push_back(word);
    }
    return Run(words);
}

Result ProgramTest::Run(const std::vector<std::string> &arguments) {
    std::ostringstream out;
    std::ostringstream err;
    const ExitStatus status = RunDrevixctl(arguments, {out, err, {fFolder.Path()}});
    return {status, out.str(), err.str()};
}

std::string ProgramTest::Do(const std::string &line) {
    const Result result = Run(line);
    EXPECT_EQ(result.status, ExitStatus::Done) << line;
    EXPECT_EQ(result.err, "") << line;
    return result.out;
}

std::string ProgramTest::Refused(const std::string &line, ExitStatus status) {
    const bool existed = std::filesystem::exists(SettingsFile());
    const std::string before = existed ? ReadWhole(SettingsFile()) : "";
    const Result result = Run(line);
    EXPECT_EQ(result.status, status) << line;
    EXPECT_EQ(result.out, "") << line;
    EXPECT_EQ(std::ranges::count(result.err, '\n'), status == ExitStatus::WrongUsage ? 2 : 1)
        << line << result.err;
    EXPECT_EQ(std::filesystem::exists(SettingsFile()), existed) << line;
    EXPECT_EQ(existed ? ReadWhole(SettingsFile()) : "", before) << line;
    return result.err.substr(0, result.err.find('\n'));
}

AppPrefs ProgramTest::Record(const std::string &fileName) const {
    const QBaseOwner base = NewDrevixBase();
    EXPECT_EQ(GetDevicePrefsFromPath(base.get(), SettingsFile(), {fFolder.Path("none")}, 0), noErr);
    Str63 name{};
    getPascalString(fileName, name.data(), kMaxFileNameLength);
    const RecordNumber number = fileName.empty() ? 0 : FindAppPrefs(base.get(), name.data());
    const AppPrefs *record = GetAppPrefs(base.get(), number);
    EXPECT_NE(record, nullptr) << fileName;
    return record != nullptr ? *record : AppPrefs{};
}

} // namespace drevix::test
