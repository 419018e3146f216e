// The icons and names of the installed applications. Looking them up takes its time, so a tile with a letter stands
// in for an icon until it is found, a few a turn of the event loop.
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

    // From here on what is asked for is looked up. Before, as until the first paint, all have tiles.
    void Start();
    // Looks up at once what is asked for: for a picture.
    void LookUpAtOnce();

    // The icon of an application by its file name with small letters, of the global settings by an empty one.
    // Until it is looked up, and without one, a tile with the first letter of `name`.
    [[nodiscard]] QIcon IconOf(const QString &fileName, const QString &name) const;
    // All that may be offered, by name; read from their entries at the first call, which takes some milliseconds.
    [[nodiscard]] const std::vector<InstalledApplication> &Installed() const;
    // The one with this file name, null if none is installed, or they were not read yet.
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
