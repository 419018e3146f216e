// A line of plain text that is cut where there is no room for it; its whole text is the tool tip then.
#pragma once

#include <QLabel>

namespace drevix {

class ElidedLabel : public QLabel {
    Q_OBJECT

  public:
    explicit ElidedLabel(QWidget *parent = nullptr);
    [[nodiscard]] QSize minimumSizeHint() const override;
    // What is said where there is no room for the whole text; it is cut only then. Empty: nothing else.
    void SetShortText(const QString &text);
    // What of the text is seen.
    [[nodiscard]] QString ShownText() const;

  protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

  private:
    QString fShortText;
};

} // namespace drevix
