#pragma once

#include "options/DeviceOptions.h"

namespace CLI {
class App;
}

namespace vireo {

/// Declares the options of the parts that stand for the phone itself; their defaults are what
/// `devices` has, which outlives the parsing.
void declareDevices(CLI::App& app, DeviceOptions& devices);

}  // namespace vireo
