// Translations of the program's own texts.
#pragma once

#include <QCoreApplication>

namespace drevix {

// Host::tr gives a text in the user's language.
class Host {
    Q_DECLARE_TR_FUNCTIONS(Host)
};

} // namespace drevix
