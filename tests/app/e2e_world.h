#pragma once
// The test world and the client's start-up shared by every end-to-end test of the process: one
// private HOME whose system file points at one world process (world mode, every received line
// logged). Made at first use; the world is stopped when the process ends.

#include <string>
#include <vector>

namespace e2e {

class shared_world {
public:
    virtual ~shared_world() = default;
    // False when the world or the client's start-up failed.
    virtual bool ready() const = 0;
    virtual int port() const = 0;
    virtual std::string home() const = 0;
    // Every line the world received so far, in order.
    virtual std::vector<std::string> received() const = 0;
};

shared_world& world();

}  // namespace e2e
