// The panel for everybody: with the keyboard alone, with assistive technology, in another language.
#include "keyboard/key_captions.h"
#include "pane/elided_label.h"
#include "tests/pane/panel.h"

#include <QAccessible>
#include <QFile>
#include <QRegularExpression>
#include <QTranslator>
#include <QXmlStreamReader>

namespace drevix::test {
namespace {

// Puts the German texts in force while they live.
std::unique_ptr<QTranslator> TakeGerman() {
    auto texts = std::make_unique<QTranslator>();
    const QString folder = QCoreApplication::applicationDirPath() + u"/../share/drevix-settings/"_s;
    EXPECT_TRUE(texts->load(u"drevix_de"_s, folder + u"translations"_s));
    QCoreApplication::installTranslator(texts.get());
    return texts;
}

// The titles of a widget, each of which is to have a key.
QStringList TitlesOf(const QWidget *widget) {
    if (const auto *bar = qobject_cast<const QTabBar *>(widget)) {
        return {bar->tabText(0), bar->tabText(1), bar->tabText(2)};
    }
    if (const auto *label = qobject_cast<const QLabel *>(widget)) {
        return label->buddy() == nullptr ? QStringList() : QStringList(label->text());
    }
    const bool isButton = widget->inherits("QAbstractButton");
    const QString title = widget->property(isButton ? "text" : "title").toString();
    return title.isEmpty() ? QStringList() : QStringList(title);
}

void ExpectRoom(const QWidget *widget) {
    const auto *label = qobject_cast<const QLabel *>(widget);
    if (const auto *elided = qobject_cast<const ElidedLabel *>(widget)) {
        EXPECT_FALSE(elided->ShownText().endsWith(u'\u2026')) << elided->text();
    } else if (label != nullptr && label->wordWrap()) {
        EXPECT_GE(label->height(), label->heightForWidth(label->width())) << label->text();
    } else if (label != nullptr || !TitlesOf(widget).isEmpty()) {
        EXPECT_GE(widget->width(), widget->sizeHint().width()) << widget->objectName();
        EXPECT_GE(widget->height(), widget->sizeHint().height()) << widget->objectName();
    }
}

class Access : public PanelTest {
  protected:
    [[nodiscard]] QSet<QWidget *> ReachedWithTab() const {
        QSet<QWidget *> reached;
        QWidget *first = Targets()->isVisible() ? Targets() : Find<QWidget>("uiTargetSearch");
        first->setFocus();
        for (QWidget *at = first; at != nullptr && !reached.contains(at); at = QApplication::focusWidget()) {
            reached += at;
            QTest::keyClick(at, Qt::Key_Tab);
        }
        return reached;
    }
    // Every control that is seen now has a name, a key of its own, room, and its turn with Tab.
    void ExpectAccess() const {
        static const QRegularExpression kOurs(u"^ui|^qt_tabwidget_tabbar$"_s);
        // There are more of them than letters.
        static const QRegularExpression kBoxes(u"^uiSettingsBox(Key|Scroll)|^uiSettingsRadio"_s);
        static const QSet<QString> kWithoutKey = {u"uiSettingsButtonFactory"_s, u"uiSettingsButtonOpenItem"_s,
                                                  u"uiTargetGlobal"_s};
        const QSet<QWidget *> reached = ReachedWithTab();
        QMap<QString, QString> used;
        for (QWidget *widget : fWindow->findChildren<QWidget *>(kOurs)) {
            if (!widget->isVisible()) {
                continue;
            }
            ExpectRoom(widget);
            for (const QString &title : TitlesOf(widget)) {
                const auto *button = qobject_cast<const QAbstractButton *>(widget);
                const QString key =
                    (button == nullptr ? QKeySequence::mnemonic(title) : button->shortcut()).toString();
                if (button != nullptr && !button->isEnabled()) {
                    continue; // its key may be another's now
                }
                if (key.isEmpty() &&
                    (widget->inherits("QToolButton") || kWithoutKey.contains(widget->objectName()) ||
                     kBoxes.match(widget->objectName()).hasMatch())) {
                    continue;
                }
                EXPECT_FALSE(key.isEmpty()) << title;
                EXPECT_FALSE(used.contains(key)) << title << " and " << used[key];
                used[key] = title;
            }
            if (widget->focusPolicy() != Qt::NoFocus && !widget->inherits("QTabWidget")) {
                const auto *access = QAccessible::queryAccessibleInterface(widget);
                EXPECT_FALSE(access->text(QAccessible::Name).isEmpty()) << widget->objectName();
            }
            const bool isRadio = widget->inherits("QRadioButton"); // the arrow keys go to the other one
            if (widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus) != 0 && !isRadio &&
                widget->focusProxy() == nullptr) {
                EXPECT_TRUE(reached.contains(widget)) << widget->objectName();
            }
        }
    }
    void ExpectAccessEverywhere() const {
        for (int page = 0; page < 3; ++page) {
            for (int tab = 0; tab < Find<QStackedWidget>("uiSettingsTabsAction")->count(); ++tab) {
                SCOPED_TRACE(::testing::Message() << SaveOffer() << ", page " << page << " tab " << tab);
                Find<QTabWidget>("uiPaneTabs")->setCurrentIndex(page);
                Find<QStackedWidget>("uiSettingsTabsAction")->setCurrentIndex(tab);
                QCoreApplication::processEvents(); // lays out
                EXPECT_EQ(fWindow->size(), QSize(800, 600)) << "the panel needs more";
                ExpectAccess();
            }
        }
    }
};

TEST_F(Access, EveryControl_IsForEverybodyInEachLanguage) {
    for (const bool isGerman : {false, true}) {
        const auto german = isGerman ? TakeGerman() : nullptr;
        Start();
        EXPECT_EQ(Targets()->itemText(0), isGerman ? u"Globale Einstellungen"_s : u"Global Settings"_s);
        EXPECT_EQ(Menu("uiSettingsMenuAction")->itemText(0), isGerman ? u"Keine Aktion"_s : u"No action"_s);
        Edit(); // lights Apply and Revert
        fWindow->resize(800, 600);
        ExpectAccessEverywhere();
        ASSERT_TRUE(fPane->showRecord(u"photo"_s)); // stores the edit
        EXPECT_FALSE(SaveOffer().isEmpty());
        ExpectAccessEverywhere();
        const FullDisk full;
        Click("uiPaneButtonSave");
        ExpectAccessEverywhere();
    }
}

// The side bar of a window that was small from its start lay over what it had no room for.
TEST_F(Access, SmallWindow_FoldsAtOnceInEachLanguage) {
    for (const bool isGerman : {false, true}) {
        const auto german = isGerman ? TakeGerman() : nullptr;
        for (int width = 760; width <= 1100; width += 20) {
            SCOPED_TRACE(::testing::Message() << width << (isGerman ? " German" : " English"));
            Start(QSize(width, 600));
            ASSERT_TRUE(Choose("uiSettingsMenuAction", 6)); // a keystroke, whose boxes need the most
            QCoreApplication::processEvents();
            for (const QWidget *button : fWindow->findChildren<QAbstractButton *>()) {
                if (button->isVisible() && button->objectName().startsWith(u"ui"_s)) {
                    EXPECT_GE(button->width(), button->minimumSizeHint().width()) << button->objectName();
                    EXPECT_GE(button->height(), 24) << button->objectName();
                    EXPECT_TRUE(button->parentWidget()->rect().contains(button->geometry()))
                        << button->objectName();
                }
            }
        }
        auto *const box = Find<QCheckBox>("uiSettingsBoxKeyShift");
        const bool wasOn = box->isChecked();
        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, 1));
        EXPECT_NE(box->isChecked(), wasOn) << "its whole height is the target";
        Find<QTabWidget>("uiPaneTabs")->setCurrentIndex(0);
        QCoreApplication::processEvents();
        const QWidget *slider = Find<QWidget>("uiSettingsSliderNavSens");
        EXPECT_FALSE(
            slider->geometry().intersects(Find<QWidget>("uiSettingsSliderNavSensLabel")->geometry()));
        const QComboBox *menu = Menu("uiSettingsMenuNavRing");
        for (int i = 0; i < menu->count(); ++i) { // and the arrow
            EXPECT_GE(menu->width(), menu->fontMetrics().horizontalAdvance(menu->itemText(i)) + 16)
                << menu->itemText(i);
        }
        EXPECT_TRUE(Find<QWidget>("uiTargetSideBar")->isVisible());
    }
}

// A closed menu never steps through its entries: they would take effect one after the other.
TEST_F(Access, ClosedMenu_OpensOnKeysAndLeavesTheWheelAlone) {
    const AppPrefs before = fPane->WorkingCopy();
    QComboBox *menu = Menu("uiSettingsMenuAction");
    for (const Qt::Key key :
         {Qt::Key_Up, Qt::Key_Down, Qt::Key_PageDown, Qt::Key_End, Qt::Key_Space, Qt::Key_K}) {
        QTest::keyClick(menu, key);
        EXPECT_TRUE(menu->view()->isVisible()) << key;
        if (key == Qt::Key_K) {
            EXPECT_EQ(menu->view()->currentIndex().data().toString(), u"Keystroke"_s);
        }
        QTest::keyClick(menu->view(), Qt::Key_Escape);
    }
    QWheelEvent wheel({5, 5}, menu->mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(menu, &wheel);
    EXPECT_FALSE(wheel.isAccepted());
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), before));
}

TEST_F(Access, Picture_IsWorkedByMouseKeysAndAssistiveTechnology) {
    auto *const picture = Find<DevicePicture>("uiSettingsTabsImages");
    const auto click = [&](int i) {
        QTest::mouseClick(picture, Qt::LeftButton, {}, picture->controlPoint(i));
    };
    auto *const group = QAccessible::queryAccessibleInterface(picture);
    ASSERT_EQ(group->childCount(), 15);
    for (const QSize size : {QSize(900, 700), QSize(1700, 1100), QSize(700, 560)}) {
        fWindow->resize(size);
        const QImage drawn = picture->grab().toImage();
        EXPECT_NE(drawn.pixelColor(drawn.rect().center()), picture->palette().color(QPalette::Base))
            << "no device";
        for (int i = 0; i < 15; ++i) {
            click(i);
            EXPECT_EQ(picture->currentIndex(), i) << "clicked";
            QAccessibleInterface *control = group->child(i);
            EXPECT_FALSE(control->text(QAccessible::Name).isEmpty());
            EXPECT_FALSE(control->text(QAccessible::Value).isEmpty());
            EXPECT_TRUE(control->state().selected && control->state().focused);
            const QPoint point = picture->mapToGlobal(picture->controlPoint(i));
            EXPECT_TRUE(control->rect().contains(point));
            EXPECT_EQ(group->indexOfChild(group->childAt(point.x(), point.y())), i);
            const int other = (i + 3) % 15;
            group->child(other)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
            EXPECT_EQ(picture->currentIndex(), other) << "pressed";
        }
    }
    EXPECT_EQ(picture->controlAt({0, 0}), -1);
    EXPECT_EQ(picture->controlAt({-5, 100000}), -1);
    // The arrow keys lead from every control to every other.
    const std::function<void(int, QSet<int> &)> goOn = [&](int at, QSet<int> &reached) {
        reached += at;
        for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down}) {
            click(at);
            QTest::keyClick(picture, key);
            QTest::keyClick(picture, Qt::Key_Space);
            EXPECT_EQ(picture->currentIndex(), picture->focusedIndex());
            if (const int next = picture->currentIndex(); !reached.contains(next)) {
                goOn(next, reached);
            }
        }
    };
    for (int from = 0; from < 15; ++from) {
        QSet<int> reached;
        goOn(from, reached);
        EXPECT_EQ(reached.size(), 15) << "from " << from;
    }
    picture->clearFocus();
    EXPECT_EQ(picture->focusedIndex(), -1);
    Find<QWidget>("uiTargetSearch")->setFocus();
    picture->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(picture->focusedIndex(), picture->currentIndex()) << "the focus can be seen at once";
}

// The template lists every text, behind its context.
TEST(Translations, German_IsComplete) {
    EXPECT_EQ(ReadWhole(DREVIX_TRANSLATIONS "/drevix_de.ts").find("unfinished"), std::string::npos);
    const auto german = TakeGerman();
    QFile file(QStringLiteral(DREVIX_TEMPLATE));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QXmlStreamReader xml(&file);
    QByteArray context;
    QMap<QByteArray, QStringList> texts;
    while (!xml.atEnd()) {
        const bool isStart = xml.readNext() == QXmlStreamReader::StartElement;
        if (isStart && xml.name() == u"name") {
            context = xml.readElementText().toUtf8();
        } else if (isStart && xml.name() == u"source") {
            const QString text = xml.readElementText();
            const QString translated = german->translate(context, text.toUtf8());
            EXPECT_FALSE(translated.isEmpty()) << text;
            for (const QString &mark : {u"%1"_s, u"%2"_s, u"&"_s, u"..."_s}) {
                EXPECT_EQ(text.contains(mark), translated.contains(mark)) << text;
            }
            texts[context] += text;
        }
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString();
    EXPECT_GT(texts["drevix::DrevixPane"].size(), 50);
    // Those of the folders below, which know nothing of translations, are listed here.
    const auto expectKnown = [&](std::string_view text) {
        EXPECT_TRUE(text.empty() || texts["Engine"].contains(TextOf(text))) << text;
    };
    for (const ActionInfo &action : AllActions()) {
        expectKnown(action.title);
        expectKnown(ActionGroupTitle(action.group));
    }
    for (int i = 0; i < kActionMenuPositions; ++i) {
        expectKnown(ActionMenuTitle(i));
    }
    for (int status = -2000; status <= 0; ++status) {
        expectKnown(StatusText(static_cast<OSErr>(status)));
    }
    for (const std::string_view word : CaptionWords()) {
        EXPECT_TRUE(texts["Keys"].contains(TextOf(word))) << word;
    }
}

} // namespace
} // namespace drevix::test
