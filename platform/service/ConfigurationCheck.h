#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "Visibility.h"

namespace vireo {

/// Something about a configuration that somebody should look at. The texts live as long as the call
/// that hands them over.
struct ConfigurationFinding {
    enum class Severity {
        eError,    ///< something that is configured does not work, or something needed is missing
        eWarning,  ///< everything works, though hardly as it was meant
    };

    Severity severity = Severity::eError;
    std::string_view where;   ///< the document, or the file
    std::string_view what;    ///< what is wrong there
    std::string_view remedy;  ///< how to mend it
};

/// Takes findings.
class VIREO_API ConfigurationFindings {
public:
    virtual ~ConfigurationFindings() = default;
    virtual void report(const ConfigurationFinding& finding) = 0;
};

/// What the persistent store consists of, as far as items can be mapped to it.
class VIREO_API StoreLayout {
public:
    virtual ~StoreLayout() = default;
    /// The index column of the table, empty when it has none. Nothing when there is no such table.
    virtual std::optional<std::string_view> indexColumn(std::string_view table) const = 0;
    /// Whether the table has this value column.
    virtual bool hasColumn(std::string_view table, std::string_view column) const = 0;
    /// The value columns of all tables, counted from 0; the table and the column, or nothing behind
    /// the last one.
    struct Place {
        std::string_view table;
        std::string_view column;
    };
    virtual std::optional<Place> place(std::size_t position) const = 0;
};

/// How much a configuration describes.
struct ConfigurationSize {
    std::size_t items = 0;
    std::size_t owners = 0;
    std::size_t collections = 0;
};

/// Checks a configuration without starting anything. Made by a factory of the plug-in.
class VIREO_API ConfigurationCheck {
public:
    virtual ~ConfigurationCheck() = default;
    /// Loads the configuration through the installed port, as the service does at its start, and
    /// reports what does not fit together. What the loading itself finds wrong is logged, not
    /// reported. `store` may be null, when its layout is not known; mappings are then not held to
    /// it. Used by one thread.
    virtual ConfigurationSize check(const StoreLayout* store, ConfigurationFindings& findings) = 0;
};

}  // namespace vireo
