// The engine package's modules behind these commands.
#pragma once

namespace zv::mmc {

inline constexpr const char* LOCAL_MODULE = "zelvoran_anpr.zelvoran_anpr_mmc_local";
inline constexpr const char* CONFIG_MODULE = "zelvoran_anpr.zelvoran_anpr_server_config";

}  // namespace zv::mmc
