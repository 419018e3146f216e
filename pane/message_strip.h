// The strip below the header: messages that are not about saving. A message stays until it is answered,
// closed, or no longer true.
#pragma once

#include "pane/tinted_bar.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

class QHBoxLayout;
class QLabel;
class QPushButton;
class QToolButton;

namespace drevix {

// What a message is about. If there are several, the first is shown.
enum class StripKind : std::uint8_t { Conflict, Problem, NoHelper, Introduction };
inline constexpr int kStripKinds = 4;

struct StripButton {
    QString title;
    std::function<void()> act;
    bool operator==(const StripButton &other) const { return title == other.title; }
};

struct StripMessage {
    QString title; // one line, bold
    QString text;  // more, in plain letters; may be empty
    std::vector<StripButton> buttons;
    bool isClosable = false;
    QStringList steps = {}; // numbered, in place of the text
    bool operator==(const StripMessage &) const = default;
};

class MessageStrip : public TintedBar {
    Q_OBJECT

  public:
    explicit MessageStrip(QWidget *parent = nullptr);

    // Shows the message, announces it to assistive technology, and keeps it until it is withdrawn.
    void Show(StripKind kind, const StripMessage &message);
    void TakeBack(StripKind kind);
    [[nodiscard]] bool Has(StripKind kind) const;
    [[nodiscard]] std::optional<StripKind> Shown() const;
    // What gets the keyboard focus first; null without buttons.
    [[nodiscard]] QWidget *FirstButton() const;

  Q_SIGNALS:
    void changed();

  protected:
    bool event(QEvent *event) override;

  private:
    void SetSizes();
    void ShowFirst();
    void Fill(StripKind kind, const StripMessage &message);
    void FillSteps(const QStringList &steps);
    void FillButtons(StripKind kind, const StripMessage &message);

    std::array<std::optional<StripMessage>, kStripKinds> fMessages;
    QLabel *fIcon;
    QLabel *fTitle;
    QLabel *fText;
    QWidget *fSteps;
    QHBoxLayout *fStepRow;
    QHBoxLayout *fUpperRow;
    QHBoxLayout *fButtonRow;
};

// A number in a circle: a step of the introduction, and the place in the panel that it is about.
class StepBadge : public QWidget {
    Q_OBJECT

  public:
    StepBadge(int number, QWidget *parent);
    [[nodiscard]] QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent *event) override;

  private:
    int fNumber;
};

} // namespace drevix
