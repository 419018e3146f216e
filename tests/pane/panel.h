// A panel in a window with settings of its own, and the hands that work it: mouse and keys.
#pragma once

#include "pane/drevix_pane.h"
#include "tests/settings/settings_files.h"

#include <QApplication>
#include <QDialog>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>

inline void PrintTo(const QString &text, std::ostream *out) { // for what a failed test prints
    *out << '"' << text.toStdString() << '"';
}

namespace drevix::test {

inline constexpr OSType kPhoto = FourCharCode("8BIM");

// Records with values of their own in every field that the panel shows.
inline AppPrefs MakeFactoryRecord(OSType application, std::string_view name) {
    AppPrefs prefs = MakeRecord(application, name);
    prefs.factory = 1;
    DevicePrefs &device = prefs.device[0];
    device = gDefaultGlobalPrefs.device[0];
    for (SlotIndex slot = 0; slot < kActionSlots; ++slot) {
        device.action[slot] = {
            kActionKeystroke, kShiftModifier, static_cast<std::uint8_t>(slot), 0, 0, 0, 0, {}};
    }
    return prefs;
}

// The settings: the global record and "photo" from the factory, "Alpha" and "beta" of the user's own.
class PanelTest : public ::testing::Test {
  protected:
    PanelTest() {
        fFolder.WriteDefaults({MakeFactoryRecord(0, ""), MakeFactoryRecord(kPhoto, "photo")});
        AppPrefs alpha = MakeFactoryRecord(kNoSignature, "Alpha");
        AppPrefs beta = MakeFactoryRecord(kNoSignature, "beta");
        alpha.factory = beta.factory = 0;
        Save({MakeFactoryRecord(0, ""), MakeFactoryRecord(kPhoto, "photo"), alpha, beta});
    }

    void Save(std::initializer_list<AppPrefs> records) const { // stamped, so that nothing is merged
        ASSERT_EQ(SaveDevicePrefsToPath(MakeBase(records, kPanelVersion).get(), fFolder.path), noErr);
    }

    // Loads and shows the panel; again, as a new start of the program does.
    void Start() {
        fPane = std::make_unique<DrevixPane>(PaneBundle{fFolder.resources, kPanelVersion});
        fPane->setProblemHandler([this](const QString &problem) { fProblem = problem; });
        fWindow = std::make_unique<QWidget>();
        auto *const layout = new QVBoxLayout(fWindow.get());
        layout->addWidget(fPane->mainView());
        fPane->mainViewDidLoad();
        fPane->didSelect();
        fWindow->resize(900, 700);
        fWindow->show();
        fWindow->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(fWindow.get()));
    }
    // Ends the panel without leaving it, as a killed program does.
    void End() {
        fWindow.reset();
        fPane.reset();
    }
    void TearDown() override { End(); }

    template <class Widget>
    [[nodiscard]] Widget *Find(const char *name) const {
        auto *const found = fWindow->findChild<Widget *>(QLatin1String(name));
        if (found == nullptr) {
            throw std::runtime_error(name); // ends the test with the name
        }
        return found;
    }
    [[nodiscard]] QComboBox *Menu(const char *name) const { return Find<QComboBox>(name); }
    [[nodiscard]] QComboBox *Targets() const { return Menu("uiSettingsMenuTarget"); }

    // Opens a menu with a key and goes down to the item. False if that cannot be reached.
    static bool Choose(QComboBox *menu, int item) {
        menu->setFocus();
        QTest::keyClick(menu, Qt::Key_Down);
        QAbstractItemView *list = menu->view();
        QTest::keyClick(list, Qt::Key_Home);
        for (int row = -1; list->currentIndex().row() < item && list->currentIndex().row() != row;) {
            row = list->currentIndex().row();
            QTest::keyClick(list, Qt::Key_Down);
        }
        const bool reached = list->isVisible() && list->currentIndex().row() == item;
        QTest::keyClick(list, reached ? Qt::Key_Return : Qt::Key_Escape);
        return reached;
    }
    bool Choose(const char *menu, int item) const { return Choose(Menu(menu), item); }
    // The command `item` places from the end of the list of applications.
    bool ChooseCommand(int fromEnd) const { return Choose(Targets(), Targets()->count() - fromEnd); }

    void Click(const char *button) const {
        auto *const widget = Find<QAbstractButton>(button);
        QTest::mouseClick(widget, Qt::LeftButton, {}, {12, widget->height() / 2});
    }
    // Clicks the page's tab and the control's line in its list.
    void SelectControl(int page, int position) const {
        auto *const bar = Find<QTabWidget>("uiPaneTabs")->tabBar();
        QTest::mouseClick(bar, Qt::LeftButton, {}, bar->tabRect(page).center());
        static constexpr auto kLists = std::to_array<const char *>(
            {"uiSettingsMenuNavRing", "uiSettingsMenuToolTuner", "uiSettingsMenuTriggerPoints"});
        auto *const list = Find<QTreeWidget>(kLists[static_cast<std::size_t>(page)]);
        QTreeWidgetItem *item = list->topLevelItem(position);
        list->scrollToItem(item);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(item).center());
    }
    // Answers the dialog that comes up next, within five seconds.
    static void AnswerNext(std::function<void(QDialog *)> answer) {
        auto *const timer = new QTimer(qApp);
        QObject::connect(timer, &QTimer::timeout, [timer, tries = 0, answer = std::move(answer)]() mutable {
            auto *const dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            if ((dialog == nullptr || dialog->property("isAnswered").toBool()) && ++tries < 1000) {
                return;
            }
            timer->stop();
            timer->deleteLater();
            ASSERT_NE(dialog, nullptr) << "no question was asked";
            dialog->setProperty("isAnswered", true);
            answer(dialog);
            if (dialog->isVisible()) {
                ADD_FAILURE() << "the dialog was not ended: " << dialog->windowTitle().toStdString();
                dialog->reject();
            }
        });
        timer->start(5);
    }
    static void Press(const QDialog *dialog, const QString &button) {
        for (auto *const candidate : dialog->findChildren<QAbstractButton *>()) {
            if (candidate->isVisible() && candidate->text().remove(QLatin1Char('&')) == button) {
                EXPECT_TRUE(QTest::qWaitFor([&] { return candidate->isEnabled(); })) << button.toStdString();
                QTest::mouseClick(candidate, Qt::LeftButton, {}, {12, candidate->height() / 2});
                return;
            }
        }
        ADD_FAILURE() << "no button " << button.toStdString();
    }

    // The records' titles in the list of applications.
    [[nodiscard]] QStringList Titles() const {
        QStringList titles;
        for (int i = 0; i < Targets()->count() - 10; ++i) {
            titles += i == 1 ? QStringLiteral("-") : Targets()->itemText(i);
        }
        return titles;
    }
    // A record of the settings file, by its number there; zeroed when there is none.
    [[nodiscard]] AppPrefs Saved(RecordNumber number) const {
        const QBaseOwner base = NewDrevixBase();
        std::ignore = GetDevicePrefsFromPath(base.get(), fFolder.path, FSRef{}, 0);
        const AppPrefs *prefs = GetAppPrefs(base.get(), number);
        return prefs == nullptr ? AppPrefs{} : *prefs;
    }
    [[nodiscard]] const ActionSlot &Slot(SlotIndex slot) const {
        return fPane->WorkingCopy().device[0].action[slot];
    }
    [[nodiscard]] const DevicePrefs &Device() const { return fPane->WorkingCopy().device[0]; }
    [[nodiscard]] bool CanApply() const {
        EXPECT_EQ(Find<QWidget>("uiPaneButtonApply")->isEnabled(),
                  Find<QWidget>("uiPaneButtonRevert")->isEnabled());
        return Find<QWidget>("uiPaneButtonApply")->isEnabled();
    }

    SettingsFolder fFolder;
    std::unique_ptr<DrevixPane> fPane;
    std::unique_ptr<QWidget> fWindow;
    QString fProblem;
};

inline bool SameBytes(const AppPrefs &a, const AppPrefs &b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

} // namespace drevix::test
