// The overview: sheets of one application or of all, to view, save as a PDF, print and copy.
#pragma once

#include "pane/sheet.h"

#include <QDialog>
#include <QLabel>
#include <QRadioButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include <functional>

namespace drevix {

// Modal to its window.
class OverviewPanel : public QDialog {
    Q_OBJECT

  public:
    // Makes the sheets of the application shown, or of all.
    using MakeSheets = std::function<std::vector<SheetContents>(bool ofAll)>;

    OverviewPanel(const QString &application, MakeSheets makeSheets, QWidget *window);

  private:
    void Show();
    void Save();
    void Print();
    void Copy();
    enum class Readers { ByUmask, UserOnly };
    bool WriteTo(const QString &path, Readers readers);

    MakeSheets fMakeSheets;
    std::vector<SheetContents> fSheets;
    QRadioButton *fAll;
    QScrollArea *fScroll;
    QWidget *fPages;
    QVBoxLayout *fPageBox; // belongs to the pages
    QLabel *fProblem;
};

} // namespace drevix
