// Where on its road a launch ends, and the parts of the road as a report shows them.
#pragma once

namespace doctor {

/// The parts of the road, in their order.
enum class Station { kSettings, kRuntime, kEnvironment, kApplication, kStart };

/// Where a launch ends. Values are bits, so that a finding can name every stop that it explains.
enum class Stop : unsigned {
  kNone = 0,             ///< It runs the application.
  kSettings = 1U << 0,   ///< The settings cannot be opened, or never end.
  kText = 1U << 1,       ///< The settings are not UTF-8.
  kNoRoot = 1U << 2,     ///< They do not name a runtime root.
  kProduct = 1U << 3,    ///< The executable's folder cannot be determined.
  kFolder = 1U << 4,     ///< The host/fxr folder cannot be searched.
  kNames = 1U << 5,      ///< The versions cannot be put in order.
  kNoVersion = 1U << 6,  ///< No version fits.
  kNoneLoads = 1U << 7,  ///< Versions fit, and none can be loaded.
  kLoading = 1U << 8,    ///< A library ends the process while it is loaded.
  kInHost = 1U << 9,     ///< The host ends the process, or does not come back, while it is asked for a context.
  kContext = 1U << 10,   ///< The host gives no context.
  kStart = 1U << 11,     ///< The runtime does not start.
  kBegin = 1U << 12,     ///< The launcher itself cannot begin.
};

constexpr Stop operator|(Stop a, Stop b) {
  return static_cast<Stop>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}

/// Whether `stop` is one of the stops.
constexpr bool Contains(Stop stops, Stop stop) {
  return (static_cast<unsigned>(stops) & static_cast<unsigned>(stop)) != 0;
}

}  // namespace doctor
