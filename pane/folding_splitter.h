// Two columns, of which the left one can be hidden, and folds away by itself where there is no room for both.
#pragma once

#include <QSplitter>

namespace drevix {

// The first widget added is the side, the second the contents. The side's width is kept for the next start.
class FoldingSplitter : public QSplitter {
    Q_OBJECT

  public:
    explicit FoldingSplitter(QWidget *parent = nullptr);

    // Once both widgets are there, hidden. Shows them.
    void Start();
    // The user hides the side, or shows it where there is room.
    void ToggleSide();
    [[nodiscard]] bool IsSideShown() const;

    // Of the contents alone: a smaller window folds the side away.
    [[nodiscard]] QSize minimumSizeHint() const override;
    // With the side, unless the user has hidden it.
    [[nodiscard]] QSize sizeHint() const override;

  Q_SIGNALS:
    void sideShown(bool isShown);

  protected:
    bool event(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

  private:
    void SetLimits();
    void Fold(int width);
    void TakeWidth();
    void KeepWidth();

    bool fIsHidden = false; // by the user
    int fNeeded = 0;        // the width at which the side is shown
    qreal fEms;             // the side's width, in lines of the font
};

} // namespace drevix
