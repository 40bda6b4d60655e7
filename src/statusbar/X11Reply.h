#pragma once

#include <cstdlib>
#include <memory>

namespace vostel {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};

// A reply of the X server, or null.
template <class Reply>
using X11Reply = std::unique_ptr<Reply, FreeReply>;

template <class Reply>
X11Reply<Reply> owned(Reply* reply) {
    return X11Reply<Reply>(reply);
}

}  // namespace vostel
