#include "pane/sheet.h"

#include "pane/device_drawing.h"
#include "pane/look.h"

#include <QCoreApplication>
#include <QDate>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QLocale>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QSvgRenderer>

#include <algorithm>

namespace drevix {
namespace {

// In units of the sheet.
constexpr qreal kUnitsPerInch = 96;
constexpr qreal kMargin = 53;
constexpr qreal kHeadLine = 94; // below the title
constexpr qreal kFoot = 92;     // from the line above the foot to the edge
constexpr int kTitleSize = 26;
constexpr int kActionSize = 17;
constexpr int kLeastActionSize = 11; // 8 pt
constexpr int kSmallSize = 13;
constexpr int kDotsPerInch = 1200;

QString SheetTr(const char *text) {
    return QCoreApplication::translate("Sheet", text);
}

QFont FontOfSize(int pixels) {
    QFont font = QGuiApplication::font();
    font.setPixelSize(pixels);
    return font;
}

// Paper is white, whatever the desktop's colours are.
QPalette PaperPalette() {
    // White here with black text would count as high contrast.
    QPalette paper(QColor(0xEFEFEF), QColor(0xEFEFEF));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        paper.setColor(role, Qt::black);
    }
    paper.setColor(QPalette::Base, Qt::white);
    return paper;
}

QPageSize PageOfLocale() {
    const bool isLetter = QLocale().measurementSystem() == QLocale::ImperialUSSystem;
    return {isLetter ? QPageSize::Letter : QPageSize::A4};
}

void PaintHead(QPainter &painter, const QSizeF &size, const SheetContents &sheet) {
    const QRectF room(kMargin, 0, size.width() - 2 * kMargin, kHeadLine - 10);
    QFont title = FontOfSize(kTitleSize);
    title.setBold(true);
    painter.setFont(FontOfSize(kSmallSize));
    painter.setPen(DimColor(PaperPalette()));
    const QString date = QLocale().toString(QDate::currentDate(), QLocale::LongFormat);
    const QString right = QStringLiteral("Drevix Veltrana · %1").arg(date);
    painter.drawText(room, Qt::AlignRight | Qt::AlignBottom, right);
    const qreal left = room.width() - painter.fontMetrics().horizontalAdvance(right) - 20;
    painter.setFont(title);
    painter.setPen(Qt::black);
    painter.drawText(room, Qt::AlignLeft | Qt::AlignBottom,
                     QFontMetricsF(title).elidedText(sheet.title, Qt::ElideRight, left));
    painter.setPen(QPen(HairlineColor(PaperPalette()), 1));
    painter.drawLine(QPointF(kMargin, kHeadLine), QPointF(size.width() - kMargin, kHeadLine));
}

void PaintFoot(QPainter &painter, const QSizeF &size, const SheetContents &sheet) {
    const qreal top = size.height() - kFoot;
    painter.setPen(QPen(HairlineColor(PaperPalette()), 1));
    painter.drawLine(QPointF(kMargin, top), QPointF(size.width() - kMargin, top));
    painter.setFont(FontOfSize(kSmallSize));
    painter.setPen(Qt::black);
    painter.drawText(QPointF(kMargin, top + 21), sheet.values.join(QStringLiteral("     ")));
    painter.setPen(DimColor(PaperPalette()));
    painter.drawText(QPointF(kMargin, top + 42),
                     SheetTr(QT_TRANSLATE_NOOP("Sheet", "Bold: changed from the factory settings.")));
}

void PaintDevice(QPainter &painter, const QRectF &place) {
    QSvgRenderer drawing(DeviceDrawing(PaperPalette()));
    const QString element = QStringLiteral("device");
    const QRectF bounds = drawing.boundsOnElement(element);
    const qreal scale = place.width() / 320;
    drawing.render(&painter, element, {place.topLeft() + bounds.topLeft() * scale, bounds.size() * scale});
}

// Paper has no tool tips for cut texts, so texts are only as large as lets all of them fit.
bool HasRoomFor(const SheetContents &sheet, const StageLayout &stage, const CalloutPainter &callouts) {
    return std::ranges::equal(
        stage.callouts, sheet.controls,
        [&](const Callout &callout, const ControlText &text) { return callouts.HasRoom(callout, text); });
}

void PaintStage(QPainter &painter, const QRectF &place, const SheetContents &sheet, int size = kActionSize) {
    const QFont font = FontOfSize(size);
    QStringList names;
    for (const ControlText &control : sheet.controls) {
        names += control.name;
    }
    const StageLayout stage = LayOutStage(place.size(), {EmOf(font), WidestName(font, names)});
    const CalloutPainter callouts(font, PaperPalette(), stage.form);
    if (size > kLeastActionSize && !HasRoomFor(sheet, stage, callouts)) {
        PaintStage(painter, place, sheet, size - 1);
        return;
    }
    painter.save();
    painter.translate(place.topLeft());
    PaintDevice(painter, stage.picture);
    for (const Callout &callout : stage.callouts) {
        callouts.PaintLeader(painter, callout, {});
    }
    for (std::size_t i = 0; i < stage.callouts.size(); ++i) {
        callouts.PaintCallout(painter, stage.callouts[i], sheet.controls[i], {});
    }
    painter.restore();
}

} // namespace

QSizeF SheetSize() {
    return PageOfLocale().size(QPageSize::Inch).transposed() * kUnitsPerInch;
}

void PaintSheet(QPainter &painter, const SheetContents &sheet) {
    const QSizeF size = SheetSize();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(QRectF({0, 0}, size), Qt::white);
    PaintHead(painter, size, sheet);
    const qreal top = kHeadLine + 25;
    PaintStage(painter, {kMargin, top, size.width() - 2 * kMargin, size.height() - kFoot - 25 - top}, sheet);
    PaintFoot(painter, size, sheet);
}

QString SheetText(const SheetContents &sheet) {
    QStringList lines = {sheet.title};
    for (const ControlText &control : sheet.controls) {
        lines += SheetTr(QT_TRANSLATE_NOOP("Sheet", "%1: %2")).arg(control.name, control.action);
    }
    return (lines + sheet.values).join(QLatin1Char('\n')) + QLatin1Char('\n');
}

bool WriteSheets(QIODevice &device, const std::vector<SheetContents> &sheets) {
    QPdfWriter writer(&device);
    writer.setPageSize(PageOfLocale());
    writer.setPageOrientation(QPageLayout::Landscape);
    writer.setPageMargins({});
    writer.setResolution(kDotsPerInch);
    writer.setTitle(sheets.size() == 1 ? sheets.front().title : QStringLiteral("Drevix Veltrana"));
    QPainter painter;
    if (!painter.begin(&writer)) {
        return false;
    }
    painter.scale(kDotsPerInch / kUnitsPerInch, kDotsPerInch / kUnitsPerInch);
    bool isWritten = true;
    for (std::size_t i = 0; i < sheets.size() && isWritten; ++i) {
        isWritten = i == 0 || writer.newPage();
        PaintSheet(painter, sheets[i]);
    }
    return painter.end() && isWritten;
}

} // namespace drevix
