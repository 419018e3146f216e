// The question that is asked before records are deleted, replaced, or imported from a file that was opened.
#pragma once

#include <QCheckBox>
#include <QDialog>

#include <cstdint>

class QLabel;

namespace drevix {

// Modal to its window. exec gives 1 when the user agreed, else 0.
class ConfirmPanel : public QDialog {
    Q_OBJECT

  public:
    enum class Kind : std::uint8_t { Remove, Replace, Import };
    // `name` is that of the record, or of the file, for people.
    ConfirmPanel(Kind kind, const QString &name, QWidget *window);

    // Names the application whose settings would be replaced; nothing for an empty name.
    void NameReplaced(const QString &name);
    // Offers to answer for all records of one operation; not offered at first.
    void OfferAll(bool isOffered);
    // Whether the answer is meant for all.
    [[nodiscard]] bool IsForAll() const;

  private:
    void actModalButtonOK();
    void actModalButtonCancel();

    QCheckBox *fForAll;
    QLabel *fEffect = nullptr;
};

} // namespace drevix
