#include "db/pool_memory.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace tarvodb {

namespace {

// Stands before each piece that is handed out. SQLite wants pieces aligned to eight bytes.
struct alignas(8) Header {
    std::uint32_t steps;  // of a kept piece with its header; 0 for one of the system's
    std::uint32_t bytes;  // for SQLite
};

struct FreePiece {
    FreePiece* next;
};

constexpr std::size_t kStep = 16;
constexpr std::size_t kMaxSteps = 64;
constexpr std::size_t kMaxKept = kMaxSteps * kStep - sizeof(Header);
constexpr std::size_t kSlab = 32768;

std::array<FreePiece*, kMaxSteps + 1> freePieces{};
std::byte* slabRest = nullptr;
std::size_t slabSize = 0;

std::size_t stepsFor(std::size_t bytes) { return (bytes + sizeof(Header) + kStep - 1) / kStep; }

Header& headerOf(void* piece) { return static_cast<Header*>(piece)[-1]; }

void* withHeader(void* memory, std::size_t steps, std::size_t bytes) {
    auto* header = static_cast<Header*>(memory);
    *header = {static_cast<std::uint32_t>(steps), static_cast<std::uint32_t>(bytes)};
    return header + 1;
}

// From the current slab; what is left of one that is too small is lost.
void* newPiece(std::size_t steps) {
    const std::size_t size = steps * kStep;
    if (slabSize < size) {
        auto* slab = static_cast<std::byte*>(std::malloc(kSlab));
        if (slab == nullptr) {
            return nullptr;
        }
        slabRest = slab;
        slabSize = kSlab;
    }
    void* piece = withHeader(slabRest, steps, size - sizeof(Header));
    slabRest += size;
    slabSize -= size;
    return piece;
}

void* allocate(int bytes) {
    const auto size = static_cast<std::size_t>(bytes);
    if (size > kMaxKept) {
        void* memory = std::malloc(size + sizeof(Header));
        return memory == nullptr ? nullptr : withHeader(memory, 0, size);
    }
    const std::size_t steps = stepsFor(size);
    FreePiece* piece = freePieces[steps];
    if (piece == nullptr) {
        return newPiece(steps);
    }
    freePieces[steps] = piece->next;
    return piece;
}

void release(void* piece) {
    const std::size_t steps = headerOf(piece).steps;
    if (steps == 0) {
        std::free(&headerOf(piece));
        return;
    }
    freePieces[steps] = new (piece) FreePiece{freePieces[steps]};
}

int sizeOf(void* piece) { return static_cast<int>(headerOf(piece).bytes); }

void* reallocate(void* piece, int bytes) {
    const auto size = static_cast<std::size_t>(bytes);
    const Header header = headerOf(piece);
    if (header.steps == 0 && size > kMaxKept) {
        void* memory = std::realloc(&headerOf(piece), size + sizeof(Header));
        return memory == nullptr ? nullptr : withHeader(memory, 0, size);
    }
    if (header.steps != 0 && size <= header.bytes) {
        return piece;
    }
    void* grown = allocate(bytes);
    if (grown != nullptr) {
        std::memcpy(grown, piece, std::min<std::size_t>(size, header.bytes));
        release(piece);
    }
    return grown;
}

int roundedUp(int bytes) {
    const auto size = static_cast<std::size_t>(bytes);
    return static_cast<int>(size > kMaxKept ? (size + 7) / 8 * 8
                                            : stepsFor(size) * kStep - sizeof(Header));
}

constexpr sqlite3_mem_methods kMethods = {allocate,     release,   reallocate,
                                          sizeOf,       roundedUp, [](void*) { return SQLITE_OK; },
                                          [](void*) {}, nullptr};

}  // namespace

const sqlite3_mem_methods& poolMemory() { return kMethods; }

}  // namespace tarvodb
