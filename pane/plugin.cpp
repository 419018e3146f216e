// The panel as the plug-in that a host loads.
#include "pane/drevix_pane.h"

namespace drevix {

class DrevixPanePlugin : public DrevixPane {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "com.halcyra.drevix.PreferencePane/4")
};

} // namespace drevix

#include "plugin.moc"
