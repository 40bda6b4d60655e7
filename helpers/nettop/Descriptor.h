#pragma once

#include <unistd.h>

#include <utility>

namespace vostel::nettop {

// An open file, closed with its owner.
class Descriptor {
  public:
    explicit Descriptor(int opened = -1) : number(opened) {}
    Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number, other.number);
        return *this;
    }
    ~Descriptor() {
        if (number >= 0) {
            close(number);
        }
    }

    int get() const { return number; }
    explicit operator bool() const { return number >= 0; }

  private:
    int number;
};

}  // namespace vostel::nettop
