// The panel for everybody: with the keyboard alone, with assistive technology, in another language.
#include "pane/pane_text.h"
#include "platform/status.h"
#include "tests/pane/panel.h"

#include <QAccessible>
#include <QCheckBox>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QMap>
#include <QSet>
#include <QStackedWidget>
#include <QTranslator>
#include <QXmlStreamReader>

namespace drevix::test {
namespace {

class Access : public PanelTest {
  protected:
    // Goes to each page, and there to each kind of action.
    void ForEachState(const std::function<void(const std::string &state)> &look) const {
        auto *const tabs = Find<QTabWidget>("uiPaneTabs");
        auto *const details = Find<QStackedWidget>("uiSettingsTabsAction");
        for (int page = 0; page < tabs->count(); ++page) {
            tabs->setCurrentIndex(page);
            for (int tab = 0; tab < details->count(); ++tab) {
                details->setCurrentIndex(tab);
                look("page " + std::to_string(page) + " tab " + std::to_string(tab));
            }
        }
    }
    void ExpectDistinctMnemonics() const {
        ForEachState([this](const std::string &state) {
            QMap<QString, QString> used;
            const auto add = [&](const QString &text) {
                const QString key = QKeySequence::mnemonic(text).toString();
                EXPECT_FALSE(!key.isEmpty() && used.contains(key))
                    << state << ": " << text.toStdString() << " and " << used[key].toStdString();
                used[key] = text;
                return !key.isEmpty();
            };
            auto *const bar = Find<QTabWidget>("uiPaneTabs")->tabBar();
            for (int i = 0; i < bar->count(); ++i) {
                EXPECT_TRUE(add(bar->tabText(i)));
            }
            EXPECT_TRUE(add(Find<QGroupBox>("uiSettingsGroupAction")->title()));
            for (const auto *label : fWindow->findChildren<QLabel *>()) {
                if (label->isVisible() && label->buddy() != nullptr) {
                    EXPECT_TRUE(add(label->text())) << label->text().toStdString();
                }
            }
            for (const auto *button : fWindow->findChildren<QAbstractButton *>()) {
                if (button->isVisible() && !button->text().isEmpty()) {
                    EXPECT_TRUE(add(button->text())) << button->text().toStdString();
                }
            }
        });
    }
};

TEST_F(Access, EveryControlHasANameAndAKey) {
    Start();
    ExpectDistinctMnemonics();
    ForEachState([this](const std::string &state) {
        for (auto *widget : fWindow->findChildren<QWidget *>()) {
            if (widget->isVisible() && widget->focusPolicy() != Qt::NoFocus &&
                widget->objectName().startsWith(QLatin1String("ui"))) {
                const auto *access = QAccessible::queryAccessibleInterface(widget);
                EXPECT_FALSE(access->text(QAccessible::Name).isEmpty() &&
                             widget->objectName() != QLatin1String("uiPaneTabs"))
                    << state << widget->objectName().toStdString();
            }
        }
    });
}

TEST_F(Access, TabReachesEveryControl) {
    Start();
    Find<QSlider>("uiSettingsSliderToolSens")->setValue(1); // lights Apply and Revert
    ForEachState([this](const std::string &state) {
        QSet<QWidget *> reached;
        Targets()->setFocus();
        for (QWidget *at = Targets(); at != nullptr && !reached.contains(at);
             at = QApplication::focusWidget()) {
            reached += at;
            QTest::keyClick(at, Qt::Key_Tab);
        }
        for (auto *widget : fWindow->findChildren<QWidget *>()) {
            const bool isRadio = widget->inherits("QRadioButton"); // the arrow keys go to the other one
            if (widget->isVisible() && widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus) != 0 &&
                !isRadio && widget->focusProxy() == nullptr &&
                widget->objectName().startsWith(QLatin1String("ui"))) {
                EXPECT_TRUE(reached.contains(widget)) << state << " " << widget->objectName().toStdString();
            }
        }
    });
}

TEST_F(Access, KeyOfTheActionBox_LeadsToItsMenu) {
    Start();
    Find<QWidget>("uiSettingsBoxKeyShift")->setFocus();
    QTest::keyClick(fWindow.get(), Qt::Key_C, Qt::AltModifier);
    EXPECT_EQ(QApplication::focusWidget(), Menu("uiSettingsMenuAction"));
}

// A closed menu never steps through its entries: they would take effect one after the other.
TEST_F(Access, ClosedMenu_OpensOnKeysAndLeavesTheWheelAlone) {
    Start();
    const AppPrefs before = fPane->WorkingCopy();
    QComboBox *menu = Menu("uiSettingsMenuAction");
    for (const Qt::Key key :
         {Qt::Key_Up, Qt::Key_Down, Qt::Key_PageDown, Qt::Key_End, Qt::Key_K, Qt::Key_Space}) {
        menu->setFocus();
        QTest::keyClick(menu, key);
        EXPECT_TRUE(menu->view()->isVisible()) << key;
        if (key == Qt::Key_K) {
            EXPECT_EQ(menu->view()->currentIndex().data().toString(), QStringLiteral("Keystroke"));
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
    Start();
    auto *const picture = Find<DevicePicture>("uiSettingsTabsImages");
    auto *const group = QAccessible::queryAccessibleInterface(picture);
    ASSERT_EQ(group->childCount(), 15);
    for (const QSize size : {QSize(900, 700), QSize(1700, 1100), QSize(700, 560)}) {
        fWindow->resize(size);
        for (int i = 0; i < 15; ++i) {
            QTest::mouseClick(picture, Qt::LeftButton, {}, picture->controlPoint(i));
            EXPECT_EQ(picture->currentIndex(), i) << "clicked";
            QAccessibleInterface *control = group->child(i);
            EXPECT_FALSE(control->text(QAccessible::Name).isEmpty() ||
                         control->text(QAccessible::Value).isEmpty());
            EXPECT_TRUE(control->state().checked && control->state().focused);
            const QPoint point = picture->mapToGlobal(picture->controlPoint(i));
            EXPECT_TRUE(control->rect().contains(point));
            EXPECT_EQ(group->indexOfChild(group->childAt(point.x(), point.y())), i);
            group->child((i + 3) % 15)
                ->actionInterface()
                ->doAction(QAccessibleActionInterface::pressAction());
            EXPECT_EQ(picture->currentIndex(), (i + 3) % 15) << "pressed";
        }
    }
    EXPECT_EQ(picture->controlAt({0, 0}), -1);
    EXPECT_EQ(picture->controlAt({-5, 100000}), -1);
    // The arrow keys lead from every control to every other.
    for (int from = 0; from < 15; ++from) {
        QSet<int> reached = {from};
        for (QList<int> open = {from}; !open.isEmpty();) {
            const int at = open.takeFirst();
            for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down}) {
                QTest::mouseClick(picture, Qt::LeftButton, {}, picture->controlPoint(at));
                QTest::keyClick(picture, key);
                QTest::keyClick(picture, Qt::Key_Space);
                EXPECT_EQ(picture->currentIndex(), picture->focusedIndex());
                if (!reached.contains(picture->currentIndex())) {
                    reached += picture->currentIndex();
                    open += picture->currentIndex();
                }
            }
        }
        for (int i = 0; i < 15; ++i) {
            EXPECT_TRUE(reached.contains(i)) << "from " << from << " to " << i;
        }
    }
    picture->clearFocus();
    EXPECT_EQ(picture->focusedIndex(), -1);
    Find<QComboBox>("uiSettingsMenuTarget")->setFocus();
    picture->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(picture->focusedIndex(), picture->currentIndex()) << "the focus can be seen at once";
}

// The messages of a file of translations: context and text, with the translation.
QMap<QString, QString> MessagesOf(const QString &path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    QXmlStreamReader xml(&file);
    QMap<QString, QString> messages;
    QString context;
    QString source;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        if (xml.name() == QLatin1String("name")) {
            context = xml.readElementText();
        } else if (xml.name() == QLatin1String("source")) {
            source = xml.readElementText();
        } else if (xml.name() == QLatin1String("translation")) {
            const bool isFinished = xml.attributes().value(QLatin1String("type")).isEmpty();
            const QString text = xml.readElementText();
            messages[context + QLatin1Char('|') + source] = isFinished ? text : QString();
        }
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    return messages;
}

TEST(Translations, German_IsComplete) {
    const QMap<QString, QString> texts = MessagesOf(QStringLiteral(DREVIX_TEMPLATE));
    const QMap<QString, QString> german = MessagesOf(QStringLiteral(DREVIX_TRANSLATIONS "/drevix_de.ts"));
    ASSERT_GT(texts.size(), 250);
    for (auto text = texts.keyBegin(); text != texts.keyEnd(); ++text) {
        const QString translated = german.value(*text);
        EXPECT_FALSE(translated.isEmpty()) << text->toStdString();
        for (const QString &mark : {QStringLiteral("%1"), QStringLiteral("%2"), QStringLiteral("&")}) {
            EXPECT_EQ(text->contains(mark), translated.contains(mark)) << text->toStdString();
        }
        EXPECT_EQ(text->endsWith(QLatin1String("...")), translated.endsWith(QLatin1String("...")))
            << text->toStdString();
    }
}

TEST(Translations, EngineTexts_AreAllKnown) {
    const auto isKnown = [](std::string_view text) {
        return text.empty() || std::ranges::find(EngineTexts(), text) != EngineTexts().end();
    };
    for (const ActionInfo &action : AllActions()) {
        EXPECT_TRUE(isKnown(action.title)) << action.title;
        EXPECT_TRUE(isKnown(ActionGroupTitle(action.group)));
    }
    for (int i = 0; i < kActionMenuPositions; ++i) {
        EXPECT_TRUE(isKnown(ActionMenuTitle(i)));
    }
    for (int status = -2000; status <= 0; ++status) {
        EXPECT_TRUE(isKnown(StatusText(static_cast<OSErr>(status)))) << status;
    }
}

// Puts the German texts in force while it lives.
class German {
  public:
    German() {
        EXPECT_TRUE(fTexts.load(QStringLiteral("drevix_de"),
                                QCoreApplication::applicationDirPath() +
                                    QStringLiteral("/../share/drevix-settings/translations")));
        QCoreApplication::installTranslator(&fTexts);
    }
    German(const German &) = delete;
    German &operator=(const German &) = delete;
    ~German() { QCoreApplication::removeTranslator(&fTexts); }

  private:
    QTranslator fTexts;
};

TEST_F(Access, German_HasKeysOfItsOwn) {
    const German german;
    Start();
    EXPECT_EQ(Targets()->itemText(0), QStringLiteral("Globale Einstellungen"));
    EXPECT_EQ(Menu("uiSettingsMenuAction")->itemText(0), QStringLiteral("Keine Aktion"));
    ExpectDistinctMnemonics();
    End();
}

TEST_F(Access, EveryText_FitsASmallScreen) {
    for (const bool isGerman : {false, true}) {
        const auto german = isGerman ? std::make_unique<German>() : nullptr;
        Start();
        fWindow->resize(800, 600);
        ForEachState([&](const std::string &state) {
            QCoreApplication::processEvents(); // lays out
            EXPECT_EQ(fWindow->size(), QSize(800, 600)) << state << ": the panel needs more";
            const auto expectRoom = [&](const QWidget *widget, const QString &text) {
                EXPECT_GE(widget->width(), widget->sizeHint().width()) << state << text.toStdString();
                EXPECT_GE(widget->height(), widget->sizeHint().height()) << state << text.toStdString();
            };
            for (const auto *label : fWindow->findChildren<QLabel *>()) {
                if (label->isVisible() && label->wordWrap()) {
                    EXPECT_GE(label->height(), label->heightForWidth(label->width()))
                        << state << label->text().toStdString();
                } else if (label->isVisible()) {
                    expectRoom(label, label->text());
                }
            }
            for (const auto *button : fWindow->findChildren<QAbstractButton *>()) {
                if (button->isVisible() && !button->text().isEmpty()) {
                    expectRoom(button, button->text());
                }
            }
            const auto *bar = Find<QTabWidget>("uiPaneTabs")->tabBar();
            expectRoom(bar, QStringLiteral("tabs"));
        });
        End();
    }
}

} // namespace
} // namespace drevix::test
