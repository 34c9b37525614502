#pragma once

#include "macsim/Commands.h"
#include "macsim/MacBuilder.h"

namespace Simulator {

/// Lays down the product's data: settings, databases, quarantine, logs, repair copies, preferences; in
/// realistic amount (about 20,000 files and 400 MB in all) if `options` asks for it.
void buildProductData(MacBuilder& mac, const CreateOptions& options);

/// Lays down the data that a new installation brings along: settings and databases, and with `realSize` the
/// console's help (then about 12,000 files and 300 MB in all).
void buildInstallableData(MacBuilder& mac, bool realSize);

}  // namespace Simulator
