// The About sheet: the panel's version and links to the help, the trainer and the maker's pages.
#pragma once

#include "pane/hyperlink.h"

#include <QDialog>

#include <optional>

namespace drevix {

class InformationPanel : public QDialog {
    Q_OBJECT

  public:
    // `version` is the panel's, nullopt if unknown; without a trainer its link is dimmed. The links do
    // nothing by themselves: connect them.
    InformationPanel(const std::optional<QString> &version, bool hasTrainer, QWidget *window);

    [[nodiscard]] const LinkButton *ManualButton() const { return uiInfoButtonManual; }
    [[nodiscard]] const LinkButton *TrainerButton() const { return uiInfoButtonTrainer; }
    [[nodiscard]] const LinkButton *MainURLButton() const { return uiInfoButtonMainURL; }
    [[nodiscard]] const LinkButton *SupportURLButton() const { return uiInfoButtonSupportURL; }

  private:
    LinkButton *uiInfoButtonManual;
    LinkButton *uiInfoButtonTrainer;
    LinkButton *uiInfoButtonMainURL;
    LinkButton *uiInfoButtonSupportURL;
};

} // namespace drevix
