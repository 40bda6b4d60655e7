#pragma once

#include "core/DefaultsStore.h"

namespace vostel::FirstRunDefaults {

// Writes each first-run value whose key the store does not hold yet.
void apply(DefaultsStore& store);

// The values, for tests and for the documentation.
PropertyList values();

}  // namespace vostel::FirstRunDefaults
