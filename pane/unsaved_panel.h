// Asks what to do when the window closes and settings could not be saved.
#pragma once

#include <QMessageBox>

#include <cstdint>

namespace drevix {

// Modal to its window.
class UnsavedPanel : public QMessageBox {
    Q_OBJECT

  public:
    enum class Answer : std::uint8_t { Retry, ExportAll, Discard, Cancel };
    // `problem` is a sentence: why they could not be saved.
    UnsavedPanel(const QString &problem, QWidget *window);

    // Cancel if it was closed without an answer.
    [[nodiscard]] Answer Ask();
};

} // namespace drevix
