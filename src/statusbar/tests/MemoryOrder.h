#pragma once

#include "statusbar/StatusBar.h"

namespace vostel {

// An order store for tests.
class MemoryOrder final : public ItemOrderStore {
  public:
    QStringList itemOrder() const override { return names; }
    void setItemOrder(const QStringList& order) override { names = order; }

    QStringList names;
};

}  // namespace vostel
