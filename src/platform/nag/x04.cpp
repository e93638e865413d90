// x04: the back end's memory: the allocator for arrays handed to callers and its
// release routine. Both go through the library's one untyped allocation pair
// (core/allocate.hpp), so any block a substitute hands out is released by the same pair
// whichever family allocated it, and an allocation-failure test reaches it as it reaches
// the containers.
#include "core/allocate.hpp"
#include "platform/nag/nag.hpp"

namespace zemath::nag {

void* x04bbc(std::size_t bytes) noexcept {
    return bytes ? raw_alloc(bytes) : nullptr;
}

void x04bdc(void** block) noexcept {
    if (!block) return;
    raw_free(*block);
    *block = nullptr;
}

}  // namespace zemath::nag
