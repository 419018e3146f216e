// The question that is asked when the window closes and settings could not be saved.
#pragma once

#include <QMessageBox>

#include <cstdint>

namespace drevix {

// Modal to its window.
class UnsavedPanel : public QMessageBox {
    Q_OBJECT

  public:
    enum class Answer : std::uint8_t { Retry, ExportAll, Discard, Cancel };
    // `problem` says in a sentence why they could not be saved.
    UnsavedPanel(const QString &problem, QWidget *window);

    // Cancel when it was closed without an answer.
    [[nodiscard]] Answer Ask();
};

} // namespace drevix
