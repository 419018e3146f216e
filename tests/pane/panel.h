// A panel in a window with settings of its own, and the hands that work it: mouse and keys.
#pragma once

#include "companion/korvane_files.h"
#include "pane/drevix_pane.h"
#include "pane/pane_text.h"
#include "pane/target_item.h"
#include "pane/target_rows.h"
#include "tests/settings/settings_files.h"
#include "tests/support/testing.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QDialog>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMimeData>
#include <QSet>
#include <QSettings>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

#include <memory>

inline std::ostream &operator<<(std::ostream &out, const QString &text) { // for what a failed test prints
    return out << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QString &text, std::ostream *out) {
    *out << text;
}

namespace drevix::test {

using namespace Qt::StringLiterals;

inline constexpr OSType kPhoto = FourCharCode("8BIM");

// A record with values of its own in all that the panel shows: the user's own when it has no signature, else
// the factory's.
inline AppPrefs MakeFullRecord(OSType application, std::string_view name,
                               std::uint8_t navSpeed = gDefaultGlobalPrefs.device[0].navSpeed) {
    AppPrefs prefs = MakeRecord(application, name);
    prefs.factory = application == kNoSignature ? 0 : 1;
    prefs.device[0] = gDefaultGlobalPrefs.device[0];
    prefs.device[0].navSpeed = navSpeed;
    for (std::uint8_t slot = 0; slot < kActionSlots; ++slot) {
        prefs.device[0].action[slot] = {kActionKeystroke, kShiftModifier, slot, 0, 0, 0, 0, {}};
    }
    return prefs;
}

// Takes what is opened in other programs while it lives.
class Opened {
  public:
    Opened() {
        for (const QString &scheme : kSchemes) {
            QDesktopServices::setUrlHandler(scheme, &fTaker, "anchorClicked");
        }
        QObject::connect(&fTaker, &QTextBrowser::anchorClicked,
                         [this](const QUrl &address) { addresses += address.toString(); });
    }
    ~Opened() {
        for (const QString &scheme : kSchemes) {
            QDesktopServices::unsetUrlHandler(scheme);
        }
    }
    QStringList addresses;

  private:
    static inline const QStringList kSchemes = {u"https"_s, u"file"_s};
    QTextBrowser fTaker; // for its signal that has an address
};

// The applications of a desktop that has those that are added here, while it lives.
class InstalledApplications {
  public:
    explicit InstalledApplications(const ScratchFolder &folder)
        : fFolder(folder.Path("data/applications/")), fHome("XDG_DATA_HOME", folder.Path("data")) {}
    void Add(const std::string &file, const std::string &name) const {
        fs::create_directories(fs::path(fFolder + file).parent_path());
        WriteWhole(fFolder + file, "[Desktop Entry]\nType=Application\nExec=x\nName=" + name + "\n");
    }

  private:
    const std::string fFolder;
    const ScopedVariable fHome, fOthers{"XDG_DATA_DIRS", "/nowhere"};
};

// The settings: the global record and "photo" from the factory, "Alpha" and "beta" of the user's own.
class PanelTest : public ::testing::Test {
  protected:
    static constexpr int kAdd = 9, kDelete = 8, kExport = 6, kImport = 5; // commands, from the list's end

    PanelTest() {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, TextOf(fFolder.Path()));
        fFolder.WriteDefaults({MakeFullRecord(0, ""), MakeFullRecord(kPhoto, "photo")});
        Save({MakeFullRecord(0, ""), MakeFullRecord(kPhoto, "photo"), MakeFullRecord(kNoSignature, "Alpha"),
              MakeFullRecord(kNoSignature, "beta")});
    }

    void Save(std::initializer_list<AppPrefs> records) const { // stamped, so that nothing is merged
        ASSERT_EQ(SaveDevicePrefsToPath(MakeBase(records, kPanelVersion).get(), fFolder.path), noErr);
    }

    void SetUp() override { Start(); }
    // Loads and shows the panel; again, as a new start of the program does.
    void Start(QSize size = {900, 700}) {
        End();
        fPane = std::make_unique<DrevixPane>(PaneBundle{fFolder.resources, kPanelVersion});
        fPane->setProblemHandler([this](const QString &problem) { fProblem = problem; });
        fWindow = std::make_unique<QWidget>();
        auto *const layout = new QVBoxLayout(fWindow.get());
        layout->addWidget(fPane->mainView());
        fPane->mainViewDidLoad();
        fPane->didSelect();
        fWindow->resize(size);
        fWindow->show();
        Activate();
    }
    void Activate() const {
        fWindow->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(fWindow.get()));
    }
    void PressKeys(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::ControlModifier) const {
        Activate(); // a question may have had the keyboard
        QTest::keyClick(fWindow.get(), key, modifiers);
    }
    // The program goes to the background, and comes back.
    static void GoAway() { Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationInactive); }
    static void ComeBack() { Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationActive); }
    // Ends the panel without leaving it, as a killed program does.
    void End() {
        fWindow.reset();
        fPane.reset();
    }

    template <class Widget>
    [[nodiscard]] Widget *Find(const char *name) const {
        auto *const found = fWindow->findChild<Widget *>(QLatin1String(name));
        if (found == nullptr) {
            throw std::runtime_error(name); // ends the test with the name
        }
        return found;
    }
    [[nodiscard]] QComboBox *Menu(const char *name) const { return Find<QComboBox>(name); }
    [[nodiscard]] QString Text(const char *name) const {
        return Find<QWidget>(name)->property("text").toString();
    }
    [[nodiscard]] QComboBox *Targets() const { return Menu("uiSettingsMenuTarget"); }

    // Chooses an item of the list of applications where its user finds it. False if it cannot be chosen.
    bool ChooseInSideBar(int item) const {
        const QVariant tag = Targets()->itemData(item, kTargetTagRole);
        if (!tag.isNull()) {
            auto *const command = Find<QAction>(qPrintable(u"uiTargetAction%1"_s.arg(tag.toInt())));
            const bool isEnabled = command->isEnabled();
            command->trigger();
            return isEnabled;
        }
        QCoreApplication::processEvents(); // the rows are built
        if (item == 0) {
            Click("uiTargetGlobal");
        } else {
            auto *const list = Find<QListView>("uiTargetList");
            const auto *rows = qobject_cast<const TargetRows *>(list->model());
            const QModelIndex row = rows->index(rows->RowOfSource(item), 0);
            list->scrollTo(row);
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(row).center());
        }
        return Targets()->currentIndex() == item;
    }
    // Opens a menu with a key and goes down to the item. False if that cannot be reached.
    bool Choose(QComboBox *menu, int item) const {
        if (menu == Targets() && !menu->isVisible()) {
            return ChooseInSideBar(item);
        }
        menu->setFocus();
        QTest::keyClick(menu, Qt::Key_Down);
        QAbstractItemView *list = menu->view();
        QTest::keyClick(list, Qt::Key_Home);
        for (int steps = 0; steps < item && list->currentIndex().row() < item; ++steps) {
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
    // Moves the tuner's sensitivity of the record shown by one.
    void Edit(Qt::Key there = Qt::Key_Right) const {
        QTest::keyClick(Find<QSlider>("uiSettingsSliderToolSens"), there);
    }
    void Delete() const {
        AnswerNext([](QDialog *panel) { Press(panel, u"Delete"_s); });
        ASSERT_TRUE(ChooseCommand(kDelete));
    }
    // Writes a file of exported records.
    [[nodiscard]] QString WriteExport(const std::vector<AppPrefs> &records) const {
        const std::string path = fFolder.Path("export.veltrana");
        auto next = records.begin();
        EXPECT_EQ(WriteAppPrefsFile(path, [&] { return next == records.end() ? nullptr : &*next++; }), noErr);
        return TextOf(path);
    }
    // Makes a file with its name in it.
    std::string MakeFile(const char *name) const {
        WriteWhole(fFolder.Path(name), name);
        return fFolder.Path(name);
    }
    // Drags a file over the widget to the point and lets it go; what becomes of it, Qt::IgnoreAction when it was
    // not taken. With shift down a move is asked for where the file's program offers one.
    static Qt::DropAction Drop(QWidget *widget, const QPoint &point, const std::string &path,
                               Qt::DropActions offered = Qt::CopyAction, Qt::KeyboardModifiers keys = {}) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(TextOf(path))});
        QDragEnterEvent enter(point, offered, &data, Qt::LeftButton, keys);
        QApplication::sendEvent(widget, &enter);
        QDragMoveEvent move(point, offered, &data, Qt::LeftButton, keys);
        QApplication::sendEvent(widget, &move);
        QDropEvent drop(point, offered, &data, Qt::LeftButton, keys);
        QApplication::sendEvent(widget, &drop);
        EXPECT_EQ(enter.isAccepted() && move.isAccepted(), drop.isAccepted());
        EXPECT_TRUE(!drop.isAccepted() || move.dropAction() == drop.dropAction());
        return drop.isAccepted() ? drop.dropAction() : Qt::IgnoreAction;
    }
    // Writes the companion's menu of all applications; the path of its file.
    static std::string WriteMenu(const std::string &entries) {
        const std::string path = FindKorvaneFileForApp("_System_");
        fs::create_directories(fs::path(path).parent_path());
        WriteWhole(path, "<HotKeys TargetApp=\"System\">" + entries + "</HotKeys>");
        return path;
    }
    // Makes a control choose an entry of that menu.
    [[nodiscard]] bool ChooseEntry(const QString &control, int entry) const {
        return fPane->showControl(control) && Choose("uiSettingsMenuAction", 3) &&
               Choose("uiSettingsMenuToolMenu", entry);
    }
    Qt::DropAction DropOnControl(SlotIndex slot, const std::string &path,
                                 Qt::DropActions offered = Qt::CopyAction) const {
        auto *const picture = Find<DevicePicture>("uiSettingsTabsImages");
        const int index = static_cast<int>(std::ranges::find(kPictureSlots, slot) - kPictureSlots.begin());
        return Drop(picture, picture->controlPoint(index), path, offered, Qt::ShiftModifier);
    }
    // Opens the menu of the control shown and chooses the entry. False where that is dim.
    [[nodiscard]] bool ChooseInMenu(const QString &entry) const {
        auto *const picture = Find<DevicePicture>("uiSettingsTabsImages");
        const QPoint point = picture->controlPoint(picture->currentIndex());
        QContextMenuEvent event(QContextMenuEvent::Mouse, point, picture->mapToGlobal(point));
        QApplication::sendEvent(picture, &event);
        auto *const menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        const QList<QAction *> actions = menu->actions();
        menu->close();
        for (QAction *action : actions) {
            if (action->text().remove(u'&') == entry) {
                const bool isEnabled = action->isEnabled();
                action->trigger();
                return isEnabled;
            }
        }
        ADD_FAILURE() << "no entry " << entry;
        return false;
    }
    // Clicks the page's tab and chooses the control in its menu.
    void SelectControl(int page, int position) const {
        auto *const tabs = Find<QTabWidget>("uiPaneTabs");
        QTest::mouseClick(tabs->tabBar(), Qt::LeftButton, {}, tabs->tabBar()->tabRect(page).center());
        EXPECT_TRUE(Choose(tabs->widget(page)->findChild<QComboBox *>(), position));
    }
    // Answers the dialog that comes up next, within five seconds.
    static void AnswerNext(const std::function<void(QDialog *)> &answer, int tries = 1000) {
        QTimer::singleShot(5, qApp, [answer, tries] {
            auto *const dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            const bool isNew = dialog != nullptr && !dialog->property("isAnswered").toBool();
            if (!isNew && tries > 0) {
                AnswerNext(answer, tries - 1);
                return;
            }
            ASSERT_TRUE(isNew) << "no question was asked";
            dialog->setProperty("isAnswered", true);
            answer(dialog);
            if (!QTest::qWaitFor([dialog] { return !dialog->isVisible(); },
                                 200)) { // its completions go first
                ADD_FAILURE() << "the dialog was not ended: " << dialog->windowTitle();
                dialog->reject();
            }
        });
    }
    // The button with that title; null when it is not seen.
    static QAbstractButton *ButtonOf(const QWidget *window, const QString &title) {
        const auto buttons = window->findChildren<QAbstractButton *>();
        const auto found = std::ranges::find_if(buttons, [&](const QAbstractButton *button) {
            return button->isVisible() && button->text().remove(u'&') == title;
        });
        return found == buttons.end() ? nullptr : *found;
    }
    static void Press(const QWidget *window, const QString &title) {
        auto *const button = ButtonOf(window, title);
        ASSERT_NE(button, nullptr) << "no button " << title;
        EXPECT_TRUE(QTest::qWaitFor([&] { return button->isEnabled(); })) << title;
        QTest::mouseClick(button, Qt::LeftButton, {}, {12, button->height() / 2});
    }
    // Chooses a file in a file panel by its path.
    static void EnterPath(const QDialog *panel, const QString &path, const QString &button) {
        panel->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(path);
        Press(panel, button);
    }

    // An item's text with its marks.
    [[nodiscard]] QString TitleOf(int item) const {
        const int marks = Targets()->itemData(item, kTargetMarksRole).toInt();
        return Targets()->itemText(item) + ((marks & kTargetIsOff) != 0 ? u" (off)"_s : QString()) +
               ((marks & kTargetIsUnsaved) != 0 ? u" *"_s : QString());
    }
    // The records' titles in the list of applications.
    [[nodiscard]] QStringList Titles() const {
        QStringList titles;
        for (int i = 0; i < Targets()->count() - 10; ++i) {
            titles += i == 1 ? u"-"_s : TitleOf(i);
        }
        return titles;
    }
    // A record of the settings file in force, by its number there; zeroed when there is none.
    [[nodiscard]] static AppPrefs Saved(RecordNumber number) {
        std::string path;
        const QBaseOwner base = NewDrevixBase();
        if (FindDevicePrefsPath(&path) == noErr) {
            std::ignore = GetDevicePrefsFromPath(base.get(), path, FSRef{}, 0);
        }
        const AppPrefs *prefs = GetAppPrefs(base.get(), number);
        return prefs == nullptr ? AppPrefs{} : *prefs;
    }
    [[nodiscard]] const ActionSlot &Slot(SlotIndex slot) const {
        return fPane->WorkingCopy().device[0].action[slot];
    }
    // What the button beside the text on unsaved changes offers; nothing when it is not there.
    [[nodiscard]] QString SaveOffer() const {
        return Find<QWidget>("uiPaneButtonSave")->isVisible() ? Text("uiPaneButtonSave").remove(u'&')
                                                              : QString();
    }
    [[nodiscard]] bool CanApply() const {
        const bool canApply = Find<QWidget>("uiPaneButtonApply")->isEnabled();
        EXPECT_EQ(Find<QWidget>("uiPaneButtonRevert")->isEnabled(), canApply);
        const QString text = Text("uiPaneTextDifferences");
        const int buttons = (canApply ? 1 : 0) + (SaveOffer().isEmpty() ? 0 : 1);
        EXPECT_EQ(buttons, text.isEmpty() || text == u"All changes saved"_s ? 0 : 1) << text;
        return canApply;
    }

    SettingsFolder fFolder;
    std::unique_ptr<DrevixPane> fPane;
    std::unique_ptr<QWidget> fWindow;
    QString fProblem;
};

} // namespace drevix::test
