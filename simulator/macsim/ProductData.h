#pragma once

#include "macsim/Commands.h"
#include "macsim/MacBuilder.h"

namespace Simulator {

/// Lays down the product's data: settings, databases, quarantine, logs, repair copies, preferences; of
/// realistic amount (about 20,000 files and 400 MB in all) if `options` asks for it.
void buildProductData(MacBuilder& mac, const CreateOptions& options);

}  // namespace Simulator
