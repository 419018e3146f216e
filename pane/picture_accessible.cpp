#include "pane/picture_accessible.h"

#include "pane/device_picture.h"

#include <QAccessibleWidget>
#include <QCoreApplication>

namespace drevix {
namespace {

// One control of the picture.
class ControlAccessible : public QAccessibleInterface, public QAccessibleActionInterface {
  public:
    ControlAccessible(DevicePicture *picture, int index) : fPicture(picture), fIndex(index) {}

    [[nodiscard]] bool isValid() const override { return true; } // it goes before the picture does
    [[nodiscard]] QObject *object() const override { return nullptr; }
    [[nodiscard]] QWindow *window() const override { return parent()->window(); }
    [[nodiscard]] QAccessibleInterface *parent() const override {
        return QAccessible::queryAccessibleInterface(fPicture);
    }
    [[nodiscard]] QAccessibleInterface *child(int /*index*/) const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface *childAt(int /*x*/, int /*y*/) const override { return nullptr; }
    [[nodiscard]] int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface * /*child*/) const override { return -1; }
    void setText(QAccessible::Text /*kind*/, const QString & /*text*/) override {}
    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::ListItem; }

    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        switch (kind) {
        case QAccessible::Name:
            return fPicture->controlText(fIndex).name;
        case QAccessible::Value:
            return fPicture->controlText(fIndex).action;
        case QAccessible::Description:
            return Description();
        default:
            return {};
        }
    }
    [[nodiscard]] QRect rect() const override {
        const QRect area = fPicture->controlRect(fIndex);
        return {fPicture->mapToGlobal(area.topLeft()), area.size()};
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = parent()->state();
        state.focusable = state.selectable = true;
        state.selected = fPicture->currentIndex() == fIndex;
        state.pressed = fPicture->isPressed(fIndex);
        state.focused = fPicture->focusedIndex() == fIndex;
        return state;
    }

    void *interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface *>(this)
                                                    : nullptr;
    }
    [[nodiscard]] QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString &action) override {
        if (action == pressAction()) {
            Q_EMIT fPicture->activated(fIndex);
        }
    }
    [[nodiscard]] QStringList keyBindingsForAction(const QString & /*action*/) const override { return {}; }

  private:
    // Includes the action, because the accessibility bus does not pass on a list item's value.
    [[nodiscard]] QString Description() const {
        const ControlText &text = fPicture->controlText(fIndex);
        QStringList parts = {text.action};
        if (fPicture->isPressed(fIndex)) {
            parts += QCoreApplication::translate("Callout", "Pressed.");
        }
        if (!text.note.isEmpty()) {
            parts += text.note;
        }
        return parts.join(QLatin1Char('\n'));
    }

    DevicePicture *fPicture;
    int fIndex;
};

class PictureAccessible : public QAccessibleWidget {
  public:
    explicit PictureAccessible(DevicePicture *picture)
        : QAccessibleWidget(picture, QAccessible::List), fPicture(picture) {
        for (int i = 0; i < kPictureControls; ++i) {
            fChildren[static_cast<std::size_t>(i)] =
                QAccessible::registerAccessibleInterface(new ControlAccessible(picture, i));
        }
    }
    PictureAccessible(const PictureAccessible &) = delete;
    PictureAccessible &operator=(const PictureAccessible &) = delete;

    [[nodiscard]] int childCount() const override { return kPictureControls; }
    [[nodiscard]] QAccessibleInterface *child(int index) const override {
        return index < 0 || index >= kPictureControls
                   ? nullptr
                   : QAccessible::accessibleInterface(fChildren[static_cast<std::size_t>(index)]);
    }
    [[nodiscard]] QAccessibleInterface *childAt(int x, int y) const override {
        return child(fPicture->controlAt(fPicture->mapFromGlobal(QPoint(x, y))));
    }
    [[nodiscard]] QAccessibleInterface *focusChild() const override {
        return child(fPicture->focusedIndex());
    }
    int indexOfChild(const QAccessibleInterface *wanted) const override {
        for (int i = 0; i < kPictureControls; ++i) {
            if (child(i) == wanted) {
                return i;
            }
        }
        return -1;
    }

  protected:
    ~PictureAccessible() override {
        for (const QAccessible::Id id : fChildren) {
            QAccessible::deleteAccessibleInterface(id);
        }
    }

  private:
    DevicePicture *fPicture;
    std::array<QAccessible::Id, kPictureSlots.size()> fChildren{};
};

QAccessibleInterface *MakeAccessible(const QString & /*className*/, QObject *object) {
    auto *const picture = qobject_cast<DevicePicture *>(object);
    return picture == nullptr ? nullptr : new PictureAccessible(picture);
}

} // namespace

void InstallPictureAccessible() {
    // Removed again when the program ends or the plug-in with this code is unloaded.
    static const struct Installed {
        Installed() { QAccessible::installFactory(MakeAccessible); }
        Installed(const Installed &) = delete;
        Installed &operator=(const Installed &) = delete;
        ~Installed() { QAccessible::removeFactory(MakeAccessible); }
    } installed;
}

} // namespace drevix
