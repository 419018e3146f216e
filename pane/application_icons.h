// The icons and names of the installed applications. Looking up icons takes time, so a tile with a letter
// stands in for each until it is found, a few per turn of the event loop.
#pragma once

#include "settings/new_application.h"

#include <QHash>
#include <QIcon>
#include <QObject>
#include <QPalette>
#include <QSet>
#include <QTimer>

#include <vector>

class QPainter;
class QRectF;

namespace drevix {

struct InstalledApplication {
    NewApplication application; // as a record is made of it
    QString name;
    QString fileName; // with small letters
    QString icon;     // a name in the icon theme, or a path
};

class ApplicationIcons : public QObject {
    Q_OBJECT

  public:
    ApplicationIcons();

    // Starts looking up the icons that are requested. Before, up to the first paint, all are tiles.
    void Start();
    // Looks up requested icons at once: for a screenshot.
    void LookUpAtOnce();

    // The icon of the application with this file name (lower case), or of the global settings for an empty
    // one. A tile with the first letter of `name` until the icon is looked up, or if there is none.
    [[nodiscard]] QIcon IconOf(const QString &fileName, const QString &name) const;
    // All applications to offer, by name. The first call reads their entries, which takes some milliseconds.
    [[nodiscard]] const std::vector<InstalledApplication> &Installed() const;
    // The application with this file name; null if it is not installed, or before the entries were read.
    [[nodiscard]] const InstalledApplication *Find(const QString &fileName) const;

  Q_SIGNALS:
    void iconsFound();
    // The installed applications were read.
    void applicationsRead() const;

  private:
    void LookUpSome();
    void Read() const;
    [[nodiscard]] QIcon LookUp(const QString &fileName, const QString &name) const;

    mutable std::vector<InstalledApplication> fInstalled;
    mutable QHash<QString, std::size_t> fPlaces; // by file name
    mutable QHash<QString, QIcon> fIcons;        // looked up, or tiles
    mutable QHash<QString, QString> fWanted;     // names by file name
    mutable QTimer fTimer;
    mutable bool fIsRead = false;
    bool fIsStarted = false;
    bool fIsAtOnce = false;
};

} // namespace drevix
