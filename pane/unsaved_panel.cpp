#include "pane/unsaved_panel.h"

#include <QAbstractButton>
#include <QPushButton>

#include <array>

namespace drevix {
namespace {

struct AnswerButton {
    UnsavedPanel::Answer answer;
    const char *title;
    QMessageBox::ButtonRole role;
};
constexpr auto kAnswers = std::to_array<AnswerButton>({
    {UnsavedPanel::Answer::Retry, QT_TRANSLATE_NOOP("drevix::UnsavedPanel", "&Retry"),
     QMessageBox::AcceptRole},
    {UnsavedPanel::Answer::ExportAll, QT_TRANSLATE_NOOP("drevix::UnsavedPanel", "&Export All…"),
     QMessageBox::ActionRole},
    {UnsavedPanel::Answer::Discard, QT_TRANSLATE_NOOP("drevix::UnsavedPanel", "&Discard"),
     QMessageBox::DestructiveRole},
    {UnsavedPanel::Answer::Cancel, QT_TRANSLATE_NOOP("drevix::UnsavedPanel", "&Cancel"),
     QMessageBox::RejectRole},
});

} // namespace

UnsavedPanel::UnsavedPanel(const QString &problem, QWidget *window) : QMessageBox(window) {
    setObjectName(QStringLiteral("uiUnsavedPanel"));
    setWindowModality(Qt::WindowModal);
    setIcon(QMessageBox::Warning);
    setTextFormat(Qt::PlainText);
    setWindowTitle(tr("Unsaved Settings"));
    setText(problem);
    setInformativeText(tr("If you discard the changes, the settings stay as they were saved last."));
    for (const AnswerButton &row : kAnswers) {
        QPushButton *const button = addButton(tr(row.title), row.role);
        button->setProperty("answer", static_cast<int>(row.answer));
        if (row.answer == Answer::Retry) {
            setDefaultButton(button);
        }
        if (row.answer == Answer::Cancel) {
            setEscapeButton(button);
        }
    }
}

UnsavedPanel::Answer UnsavedPanel::Ask() {
    exec();
    return clickedButton() == nullptr ? Answer::Cancel
                                      : static_cast<Answer>(clickedButton()->property("answer").toInt());
}

} // namespace drevix
