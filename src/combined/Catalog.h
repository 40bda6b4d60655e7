#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QString>

#include "core/Modules.h"

namespace vostel {

// An item that can be a segment of the combined one.
struct CatalogEntry {
    QString id;
    QString title;
    std::function<std::unique_ptr<EmbeddableModule>()> make;  // a fresh instance
};

// In the order that segments have until the user changes it; each id once.
using Catalog = std::vector<CatalogEntry>;

}  // namespace vostel
