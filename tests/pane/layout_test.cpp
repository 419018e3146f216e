// The factory's settings in the keyboard layout in force.
#include "tests/pane/panel.h"

namespace drevix::test {
namespace {

constexpr SlotIndex kFirstButton = 18;
constexpr std::uint8_t kPlaceOfY = 16;

class Layouts : public PanelTest {
  protected:
    // As a new user starts in a layout, or one with settings.
    void StartIn(const char *layout) {
        fLayout.emplace("XKB_DEFAULT_LAYOUT", layout);
        Start();
        ASSERT_TRUE(fPane->showRecord(u"librecad"_s)); // whose button I undoes
        ASSERT_TRUE(fPane->showControl(u"buttonI"_s));
    }
    void SetUp() override {
        fs::copy(DREVIX_TEST_DATA "/../../resources", fFolder.resources.path,
                 fs::copy_options::recursive | fs::copy_options::overwrite_existing);
        fs::remove(fFolder.path);
    }
    [[nodiscard]] const ControlText &ButtonI() const {
        return Find<DevicePicture>("uiSettingsTabsImages")->controlText(PictureIndexOf(kFirstButton));
    }

    const ScopedVariable fNoDisplay{"DISPLAY", ""};
    const ScopedVariable fNoCompositor{"WAYLAND_DISPLAY", ""};
    const ScopedVariable fNoVariant{"XKB_DEFAULT_VARIANT", ""};
    std::optional<ScopedVariable> fLayout;
};

TEST_F(Layouts, RecordsOfTheUser_AreNotMovedAndNotCalledChanged) {
    StartIn("de");
    EXPECT_EQ(Slot(kFirstButton).keyCode, kPlaceOfY) << "a first start";
    EXPECT_FALSE(ButtonI().isChanged);
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
