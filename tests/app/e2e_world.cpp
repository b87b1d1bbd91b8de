#include "tests/app/e2e_world.h"

#include "tests/app/e2e_support.h"
#include "tests/net/net_test_support.h"

namespace e2e {

namespace {

class world_process : public shared_world {
public:
    world_process() {
        started = process.start({"--log", dir.file("world.log")}, dir.file("world.err")) &&
                  start_client_process(dir.path(), process.port());
    }
    bool ready() const override { return started; }
    int port() const override { return process.port(); }
    std::string home() const override { return dir.path(); }
    std::vector<std::string> received() const override { return read_lines(dir.file("world.log")); }

private:
    net_test::temp_dir dir;
    net_test::testworld_process process;
    bool started = false;
};

}  // namespace

shared_world& world() {
    static world_process one;
    return one;
}

}  // namespace e2e
