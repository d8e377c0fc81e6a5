// libFuzzer target: stream images fed to the memory and file loaders.
#include <unistd.h>

#include "loader_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string path = "/tmp/orv_rng_fuzz_" + std::to_string(getpid());
    return loader_harness::run(data, size, path);
}
