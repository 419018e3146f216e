// The factory's settings in the keyboard layout in force.
#include "tests/pane/panel.h"

namespace drevix::test {
namespace {

constexpr SlotIndex kFirstButton = 18;
constexpr std::uint8_t kPlaceOfY = 16;

class Layouts : public PanelTest {
  protected:
    // As a new user starts in a layout, or one with settings.
    void StartIn(const char *layout, const char *variant = "") {
        fLayout.emplace("XKB_DEFAULT_LAYOUT", layout);
        fVariant.emplace("XKB_DEFAULT_VARIANT", variant);
        Start();
        ASSERT_TRUE(fPane->showRecord(u"librecad"_s)); // whose button I undoes
        ASSERT_TRUE(fPane->showControl(u"buttonI"_s));
    }
    void SetUp() override {
        std::filesystem::copy(DREVIX_TEST_DATA "/../../resources", fFolder.resources.path,
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::overwrite_existing);
        std::filesystem::remove(fFolder.path);
    }
    [[nodiscard]] const ControlText &ButtonI() const {
        return Find<DevicePicture>("uiSettingsTabsImages")->controlText(PictureIndexOf(kFirstButton));
    }

    const ScopedVariable fNoDisplay{"DISPLAY", ""};
    const ScopedVariable fNoCompositor{"WAYLAND_DISPLAY", ""};
    std::optional<ScopedVariable> fLayout, fVariant;
};

TEST_F(Layouts, Undo_IsUndoOnAFirstStart) {
    for (const auto &[layout, variant, key] :
         {std::tuple("us", "", 6), {"de", "", 16}, {"fr", "", 13}, {"us", "dvorak", 44}}) {
        StartIn(layout, variant);
        EXPECT_EQ(ButtonI().action, u"Ctrl+Z"_s) << layout << variant;
        EXPECT_FALSE(ButtonI().isChanged) << layout << variant;
        EXPECT_EQ(Slot(kFirstButton).keyCode, key) << layout << variant;
    }
}

TEST_F(Layouts, RecordsOfTheUser_AreNotMovedAndNotCalledChanged) {
    StartIn("us");
    Edit();
    Click("uiPaneButtonApply");
    const std::uint8_t before = Slot(kFirstButton).keyCode;
    StartIn("de");
    EXPECT_EQ(Slot(kFirstButton).keyCode, before);
    EXPECT_EQ(ButtonI().action, u"Ctrl+Y"_s);
    EXPECT_FALSE(ButtonI().isChanged);
    Click("uiSettingsButtonTriggerDefaults");
    EXPECT_EQ(ButtonI().action, u"Ctrl+Z"_s) << "the factory's is that of the layout in force";
    EXPECT_EQ(Slot(kFirstButton).keyCode, kPlaceOfY);
}

} // namespace
} // namespace drevix::test
