// An item of the list of applications, and what each of its roles holds.
#pragma once

#include <QStandardItem>

namespace drevix {

class ApplicationIcons;

enum TargetRole : int {
    kTargetTagRole = Qt::UserRole, // of a command: its tag
    kTargetMarksRole,              // of a record: TargetMark bits
    kTargetFileNameRole, // of a record: its application's file name with small letters, empty for the global one
};
enum TargetMark : int {
    kTargetIsRecord = 1, // and no command or separator
    kTargetIsGlobal = 2,
    kTargetIsFactory = 4,
    kTargetIsOff = 8,
    kTargetIsUnsaved = 16,
};

// What the list shows of a record.
struct TargetState {
    QString name;
    QString fileName;
    int marks = 0;
    bool operator==(const TargetState &) const = default;
};

// A record's item. Cheap, because there may be ten thousand; its icon is requested when it is drawn.
class TargetItem : public QStandardItem {
  public:
    TargetItem(TargetState state, const ApplicationIcons *icons) : fState(std::move(state)), fIcons(icons) {}
    void SetState(const TargetState &state);
    [[nodiscard]] QVariant data(int role) const override;

  private:
    TargetState fState;
    const ApplicationIcons *fIcons;
};

// "Your settings, off, unsaved changes", as assistive technology reads it after the name.
[[nodiscard]] QString TargetDescription(int marks);

} // namespace drevix
