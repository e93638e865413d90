// x04: the back end's memory: the allocator for arrays handed to callers and its
// release routine. Plain malloc/free, so any block a substitute hands out is released
// by the same pair whichever family allocated it.
#include <cstdlib>

#include "platform/nag/nag.hpp"

namespace zemath::nag {

void* x04bbc(std::size_t bytes) noexcept {
    return bytes ? std::malloc(bytes) : nullptr;
}

void x04bdc(void** block) noexcept {
    if (!block) return;
    std::free(*block);
    *block = nullptr;
}

}  // namespace zemath::nag
