// Notices that the keyboard layout is no longer the one that gAsciiTable was built from, which is built but once.
#pragma once

#include <QElapsedTimer>
#include <QObject>

namespace drevix {

class LayoutWatch : public QObject {
    Q_OBJECT

  public:
    // Asks the window system when a letter is typed that the table has elsewhere; on a platform without windows never.
    explicit LayoutWatch(QObject *parent);

    // Asks now, as on coming to the front: elsewhere the user may have switched. Costs a few milliseconds.
    void Check();

  Q_SIGNALS:
    // The layout is another one than the table's, which is told at each check, or the same again.
    void switched(bool isOther);

  protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

  private:
    bool fIsOther = false;
    QElapsedTimer fSinceCheck;
};

} // namespace drevix
