// Draws the callouts around a picture of the device: on the panel's stage and on a sheet.
#pragma once

#include "pane/callout_layout.h"

#include <QFont>
#include <QPalette>
#include <QString>

class QPainter;

namespace drevix {

// A control's name and action.
struct ControlText {
    QString name;
    QString action;
    QString note;           // what the factory would have it do, where that is something else
    bool isChanged = false; // from the factory
    bool isNothing = false; // no action
    bool operator==(const ControlText &) const = default;
};

// How to highlight a control.
struct ControlState {
    bool isChosen = false;
    bool isPointedAt = false;
    bool isPressed = false; // on the device
    bool isFocused = false; // has the keyboard
};

// The width of the widest name, as callouts write it.
[[nodiscard]] qreal WidestName(const QFont &font, const QStringList &names);

class CalloutPainter {
  public:
    CalloutPainter(const QFont &font, QPalette palette, CalloutForm form);

    void PaintLeader(QPainter &painter, const Callout &callout, const ControlState &state) const;
    // Whether the action fits below its name uncut.
    [[nodiscard]] bool HasRoom(const Callout &callout, const ControlText &text) const;
    void PaintCallout(QPainter &painter, const Callout &callout, const ControlText &text,
                      const ControlState &state) const;

  private:
    [[nodiscard]] QColor TextColor(const ControlState &state, bool isDim) const;
    void PaintGround(QPainter &painter, const QRectF &frame, const ControlState &state) const;
    void PaintTexts(QPainter &painter, const Callout &callout, const ControlText &text,
                    const ControlState &state) const;

    QFont fNameFont;
    QFont fActionFont;
    QPalette fPalette;
    CalloutForm fForm;
    qreal fUnit;
};

} // namespace drevix
