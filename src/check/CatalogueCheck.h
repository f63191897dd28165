#pragma once

#include "service/ConfigurationCheck.h"

namespace vireo {

/// Loads the configuration as the service does, and holds it to what the service needs.
class CatalogueCheck : public ConfigurationCheck {
public:
    ConfigurationSize check(const StoreLayout* store, ConfigurationFindings& findings) override;
};

}  // namespace vireo
