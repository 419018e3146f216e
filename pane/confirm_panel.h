// Asks before records are deleted, replaced, or imported from an opened file.
#pragma once

#include <QCheckBox>
#include <QDialog>

#include <cstdint>

class QLabel;

namespace drevix {

// Modal to its window. exec returns 1 if the user agreed, else 0.
class ConfirmPanel : public QDialog {
    Q_OBJECT

  public:
    enum class Kind : std::uint8_t { Remove, Replace, Import };
    // `name` is the name of the record, or of the file, for people.
    ConfirmPanel(Kind kind, const QString &name, QWidget *window);

    // Names the application whose settings would be replaced; nothing for an empty name.
    void NameReplaced(const QString &name);
    // Offers to apply the answer to all records of one operation; off by default.
    void OfferAll(bool isOffered);
    // Whether the answer applies to all.
    [[nodiscard]] bool IsForAll() const;

  private:
    void actModalButtonOK();
    void actModalButtonCancel();

    QCheckBox *fForAll;
    QLabel *fEffect = nullptr;
};

} // namespace drevix
