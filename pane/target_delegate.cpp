#include "pane/target_delegate.h"

#include "pane/hyperlink.h"
#include "pane/look.h"
#include "pane/target_item.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace drevix {
namespace {

constexpr qreal kRowIconEms = 1.2;
constexpr qreal kRowEms = 1.65;
constexpr qreal kHeadingSize = 0.85;
constexpr qreal kPillSize = 0.85;
constexpr qreal kOfOff = 0.5;

QString OffText() {
    return QCoreApplication::translate("Targets", "Off");
}
QString AddText() {
    return QCoreApplication::translate("Targets", "Add");
}

QFont HeadingFont(const QFont &font) {
    QFont heading = ScaledFont(font, kHeadingSize);
    heading.setWeight(QFont::DemiBold);
    return heading;
}

// Draws one row from both ends inward; the name gets the room left in the middle.
class RowPainter {
  public:
    RowPainter(QPainter &painter, const QStyleOptionViewItem &option, bool isChosen)
        : fPainter(painter), fOption(option), fUnit(UnitOf(EmOf(option.font))), fIsChosen(isChosen),
          fRoom(QRectF(option.rect).adjusted(2 * fUnit, 0, -2 * fUnit, 0)) {}

    void PaintGround() {
        const bool isHovered = fOption.state.testFlag(QStyle::State_MouseOver);
        if (!fIsChosen && !isHovered) {
            return;
        }
        const QColor highlight = fOption.palette.color(QPalette::Highlight);
        fPainter.setPen(fIsChosen ? QPen(Qt::NoPen) : QPen(highlight));
        fPainter.setBrush(fIsChosen ? QBrush(highlight) : QBrush(Qt::NoBrush));
        fPainter.drawRoundedRect(Inset(0.5), kRadius, kRadius);
    }
    void PaintRing() { PaintFocusRing(fPainter, Inset(2), fOption.palette); }
    void PaintIcon(const QIcon &icon, bool isOff) {
        const int side = static_cast<int>(std::lround(EmOf(fOption.font) * kRowIconEms));
        QRect place(0, 0, side, side);
        place.moveCenter(fRoom.toRect().center());
        place.moveLeft(static_cast<int>(fRoom.left()));
        fPainter.setOpacity(isOff ? kOfOff : 1);
        icon.paint(&fPainter, place);
        fPainter.setOpacity(1);
        fRoom.setLeft(place.right() + 2 * fUnit);
    }
    void PaintDot() {
        const qreal size = 2 * fUnit;
        const QRectF dot(fRoom.right() - size, fRoom.center().y() - size / 2, size, size);
        fPainter.setPen(Qt::NoPen);
        fPainter.setBrush(fIsChosen ? TextColor(false) : fOption.palette.color(QPalette::Highlight));
        fPainter.drawEllipse(dot);
        fRoom.setRight(dot.left() - fUnit);
    }
    void PaintPill(const QString &text) {
        fPainter.setFont(ScaledFont(fOption.font, kPillSize));
        const QFontMetricsF metrics(fPainter.font());
        QRectF pill(0, 0, metrics.horizontalAdvance(text) + 3 * fUnit, metrics.height() + fUnit / 2);
        pill.moveCenter(fRoom.center());
        pill.moveRight(fRoom.right());
        fPainter.setPen(TextColor(true));
        fPainter.setBrush(Qt::NoBrush);
        fPainter.drawRoundedRect(pill, pill.height() / 2, pill.height() / 2);
        fPainter.drawText(pill, Qt::AlignCenter, text);
        fRoom.setRight(pill.left() - fUnit);
    }
    void PaintAdd() {
        fPainter.setFont(fOption.font);
        fPainter.setPen(HyperlinkColor(LinkLook::Normal, fOption.palette, QPalette::Window));
        fPainter.drawText(TargetDelegate::AddRect(fOption.rect, fOption.font), Qt::AlignCenter, AddText());
        fRoom.setRight(TargetDelegate::AddRect(fOption.rect, fOption.font).left());
    }
    void PaintName(const QString &name, bool isDim) {
        fPainter.setFont(fOption.font);
        fPainter.setPen(TextColor(isDim));
        const QString cut = QFontMetricsF(fOption.font).elidedText(name, Qt::ElideRight, fRoom.width());
        fPainter.drawText(fRoom, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, cut);
    }

  private:
    [[nodiscard]] QRectF Inset(qreal by) const {
        return QRectF(fOption.rect).adjusted(fUnit + by, by, -fUnit - by, -by);
    }
    [[nodiscard]] QColor TextColor(bool isDim) const {
        return fIsChosen ? fOption.palette.color(QPalette::HighlightedText)
               : isDim   ? DimColor(fOption.palette)
                         : fOption.palette.color(QPalette::Text);
    }

    QPainter &fPainter;
    const QStyleOptionViewItem &fOption;
    qreal fUnit;
    bool fIsChosen;
    QRectF fRoom;
};

void PaintHeading(QPainter &painter, const QStyleOptionViewItem &option, const QString &text) {
    const qreal unit = UnitOf(EmOf(option.font));
    painter.setFont(HeadingFont(option.font));
    QPalette palette = option.palette; // a heading cannot be chosen, but is not off
    palette.setCurrentColorGroup(QPalette::Active);
    painter.setPen(DimColor(palette));
    painter.drawText(QRectF(option.rect).adjusted(2 * unit, 0, -unit, -unit / 2),
                     Qt::AlignBottom | Qt::AlignLeft | Qt::TextSingleLine, text);
}

// As QComboBox marks one.
bool IsSeparator(const QModelIndex &index) {
    return index.data(Qt::AccessibleDescriptionRole).toString() == QLatin1String("separator");
}

void PaintRow(QPainter &painter, const QStyleOptionViewItem &option, const QModelIndex &index) {
    const int marks = index.data(kTargetMarksRole).toInt();
    const bool isRecord = (marks & kTargetIsRecord) != 0;
    const bool isOff = (marks & kTargetIsOff) != 0;
    RowPainter row(painter, option, option.state.testFlag(QStyle::State_Selected));
    row.PaintGround();
    row.PaintIcon(index.data(Qt::DecorationRole).value<QIcon>(), isOff);
    if ((marks & kTargetIsUnsaved) != 0) {
        row.PaintDot();
    }
    if (isOff) {
        row.PaintPill(OffText());
    }
    if (!isRecord) {
        row.PaintAdd();
    }
    row.PaintName(index.data().toString(), isOff || !isRecord);
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        row.PaintRing();
    }
}

} // namespace

QRect TargetDelegate::AddRect(const QRect &row, const QFont &font) {
    const int unit = static_cast<int>(UnitOf(EmOf(font)));
    const int width = QFontMetrics(font).horizontalAdvance(AddText()) + 4 * unit;
    return {row.right() - width - unit, row.top(), width, row.height()};
}

QSize TargetDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const {
    const qreal em = EmOf(option.font);
    if (fPlace == Place::PopUp && IsSeparator(index)) {
        return {1, static_cast<int>(2 * UnitOf(em)) + 1};
    }
    const int height = std::max(kLeastTarget, static_cast<int>(std::lround(em * kRowEms)));
    const int name = QFontMetrics(option.font).horizontalAdvance(index.data().toString());
    return {fPlace == Place::PopUp ? name + 4 * height : height, height};
}

void TargetDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                           const QModelIndex &index) const {
    const bool isRecord = (index.data(kTargetMarksRole).toInt() & kTargetIsRecord) != 0;
    const bool isEnabled = index.flags().testFlag(Qt::ItemIsEnabled);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (fPlace == Place::PopUp && IsSeparator(index)) {
        const QRect line(option.rect.left(), option.rect.center().y(), option.rect.width(), 1);
        painter->fillRect(line, HairlineColor(option.palette));
    } else if (fPlace == Place::PopUp && !isRecord) {
        QStyledItemDelegate::paint(painter, option, index);
    } else if (!isEnabled) {
        PaintHeading(*painter, option, index.data().toString());
    } else {
        PaintRow(*painter, option, index);
    }
    painter->restore();
}

bool TargetDelegate::editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                                 const QModelIndex &index) {
    if (fPlace == Place::SideBar && event->type() == QEvent::MouseButtonRelease &&
        AddRect(option.rect, option.font).contains(static_cast<QMouseEvent *>(event)->pos())) {
        Q_EMIT addClicked(index);
    }
    return QStyledItemDelegate::editorEvent(event, model, option, index);
}

} // namespace drevix
