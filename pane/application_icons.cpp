#include "pane/application_icons.h"

#include "pane/painted_icon.h"
#include "pane/pane_text.h"
#include "pane/panel_icons.h"

#include <QCollator>
#include <QFontInfo>

#include <algorithm>

namespace drevix {
namespace {

constexpr int kLookUpsATurn = 4;

// Never changes, so that an application keeps its colour. FNV-1a over the bytes of the name.
std::uint32_t HashOf(const QString &name) {
    std::uint32_t hash = 2166136261U;
    for (const char byte : name.toUtf8()) {
        hash = (hash ^ static_cast<std::uint8_t>(byte)) * 16777619U;
    }
    return hash;
}

// A square with a letter, sharp at every size.
class TileEngine : public PaintedIcon {
  public:
    TileEngine(const QString &fileName, const QString &name)
        : fLetter(name.isEmpty() ? QString() : name.left(name.front().isHighSurrogate() ? 2 : 1).toUpper()),
          fColor(QColor::fromHsv(static_cast<int>(HashOf(fileName) % 360), 125, 150)) {}
    [[nodiscard]] QIconEngine *clone() const override { return new TileEngine(*this); }
    void paint(QPainter *painter, const QRect &rect, QIcon::Mode /*mode*/, QIcon::State /*state*/) override {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(fColor);
        painter->drawRoundedRect(rect, rect.height() / 7.0, rect.height() / 7.0);
        PaintLetter(painter, rect);
        painter->restore();
    }

  private:
    // Scaled up, because creating a font for each size would take longer than the rest of drawing these
    // icons.
    void PaintLetter(QPainter *painter, const QRect &rect) const {
        constexpr qreal kPart = 0.6; // of the square
        QFont font = painter->font();
        font.setBold(true);
        const qreal scale = kPart * rect.height() / std::max(1, QFontInfo(font).pixelSize());
        const QRectF room(-rect.width() / scale / 2, -rect.height() / scale / 2, rect.width() / scale,
                          rect.height() / scale);
        painter->translate(QRectF(rect).center());
        painter->scale(scale, scale);
        painter->setFont(font);
        painter->setPen(Qt::white);
        painter->drawText(room, Qt::AlignCenter, fLetter);
    }

    QString fLetter;
    QColor fColor;
};

// A file name as a record stores it, in lower case.
QString StoredNameOf(const std::string &fileName) {
    return FileNameKey(StoredFileName(fileName));
}

QIcon TileOf(const QString &fileName, const QString &name) {
    return QIcon(new TileEngine(fileName, name));
}

} // namespace

ApplicationIcons::ApplicationIcons() {
    fTimer.setInterval(0);
    connect(&fTimer, &QTimer::timeout, this, &ApplicationIcons::LookUpSome);
}

void ApplicationIcons::Start() {
    fIsStarted = true;
    if (!fWanted.isEmpty()) {
        fTimer.start();
    }
}

void ApplicationIcons::LookUpAtOnce() {
    fIsAtOnce = true;
}

QIcon ApplicationIcons::IconOf(const QString &fileName, const QString &name) const {
    if (const auto known = fIcons.constFind(fileName); known != fIcons.constEnd()) {
        return *known;
    }
    QIcon icon = fIsAtOnce ? LookUp(fileName, name) : TileOf(fileName, name);
    fIcons.insert(fileName, icon);
    if (!fIsAtOnce) {
        fWanted.insert(fileName, name);
        if (fIsStarted) {
            fTimer.start();
        }
    }
    return icon;
}

void ApplicationIcons::LookUpSome() {
    for (int i = 0; i < kLookUpsATurn && !fWanted.isEmpty(); ++i) {
        const auto next = fWanted.constBegin();
        fIcons.insert(next.key(), LookUp(next.key(), next.value()));
        fWanted.erase(next);
    }
    if (fWanted.isEmpty()) {
        fTimer.stop();
    }
    Q_EMIT iconsFound();
}

QIcon ApplicationIcons::LookUp(const QString &fileName, const QString &name) const {
    if (fileName.isEmpty()) {
        const QIcon global = PanelIcon("preferences-desktop-peripherals");
        return global.isNull() ? TileOf(fileName, name) : global;
    }
    Read();
    const InstalledApplication *found = Find(fileName);
    const QString icon = found == nullptr ? QString() : found->icon;
    const QIcon own = icon.startsWith(QLatin1Char('/')) ? QIcon(icon) : QIcon::fromTheme(icon);
    return own.isNull() || own.availableSizes().isEmpty() ? TileOf(fileName, name) : own;
}

const std::vector<InstalledApplication> &ApplicationIcons::Installed() const {
    Read();
    return fInstalled;
}

const InstalledApplication *ApplicationIcons::Find(const QString &fileName) const {
    const auto place = fPlaces.constFind(fileName);
    return place == fPlaces.constEnd() ? nullptr : &fInstalled[*place];
}

void ApplicationIcons::Read() const {
    if (fIsRead) {
        return;
    }
    fIsRead = true;
    const std::vector<DesktopEntry> entries = InstalledApplications(MessagesLocale());
    fInstalled.reserve(entries.size());
    for (const DesktopEntry &entry : entries) {
        const NewApplication application = ApplicationOfEntry(entry);
        fInstalled.push_back(
            {application, TextOf(entry.name), StoredNameOf(application.fileName), TextOf(entry.icon)});
    }
    QCollator order;
    order.setCaseSensitivity(Qt::CaseInsensitive);
    std::ranges::sort(fInstalled, [&](const InstalledApplication &a, const InstalledApplication &b) {
        const int way = order.compare(a.name, b.name);
        return way != 0 ? way < 0 : a.fileName < b.fileName;
    });
    for (std::size_t i = 0; i < fInstalled.size(); ++i) {
        fPlaces.insert(fInstalled[i].fileName, i);
    }
    Q_EMIT applicationsRead();
}

} // namespace drevix
