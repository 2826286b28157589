// The commands of this room, and the engine's modules behind them.
#pragma once

#include "command/command.h"

namespace zv::mmc {

inline constexpr const char* LOCAL_MODULE = "zelvoran_anpr.zelvoran_anpr_mmc_local";
inline constexpr const char* CONFIG_MODULE = "zelvoran_anpr.zelvoran_anpr_server_config";

// Shows or chooses who recognises make, model and colour.
extern const Command MMC_BACKEND;
// Downloads the on-device model and provides the llama-server that serves it.
extern const Command MMC_SETUP;
// Removes the on-device llama-server and, on request, the model.
extern const Command MMC_UNINSTALL;

}  // namespace zv::mmc
