#include "db/pool_memory.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

namespace tarvodb {

namespace {

// A piece of memory that is filled with a byte of its own.
struct Piece {
    unsigned char* memory;
    int size;
    unsigned char mark;

    void fill() { std::fill_n(memory, size, mark); }
    [[nodiscard]] bool isWhole(int bytes) const {
        return std::all_of(memory, memory + bytes, [this](auto byte) { return byte == mark; });
    }
};

class PoolMemory : public testing::Test {
  protected:
    Piece allocated(int size) {
        Piece piece{static_cast<unsigned char*>(methods_.xMalloc(size)), size, ++mark_};
        expectFits(piece);
        piece.fill();
        return piece;
    }

    void resize(Piece& piece, int size) {
        const int kept = std::min(size, piece.size);
        piece.memory = static_cast<unsigned char*>(methods_.xRealloc(piece.memory, size));
        piece.size = size;
        EXPECT_TRUE(piece.isWhole(kept));
        expectFits(piece);
        piece.fill();
    }

    void expectFits(const Piece& piece) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(piece.memory) % 8, 0U);
        EXPECT_GE(methods_.xSize(piece.memory), piece.size);
    }

    const sqlite3_mem_methods& methods_ = poolMemory();

  private:
    unsigned char mark_ = 0;
};

// An emulator takes a limit and keeps none.
[[maybe_unused]] bool keepsLimits() {
    rlimit before{};
    getrlimit(RLIMIT_AS, &before);
    rlimit lower = before;
    --lower.rlim_cur;
    setrlimit(RLIMIT_AS, &lower);
    rlimit kept{};
    getrlimit(RLIMIT_AS, &kept);
    setrlimit(RLIMIT_AS, &before);
    return kept.rlim_cur == lower.rlim_cur;
}

}  // namespace

TEST_F(PoolMemory, KeepsEachPieceWholeWhileOthersComeAndGo) {
    std::mt19937 random(1);
    const auto below = [&random](unsigned limit) { return static_cast<int>(random() % limit); };
    const auto anySize = [&below] { return 1 + below(below(4) == 0 ? 5000 : 200); };
    std::vector<Piece> pieces;
    for (int step = 0; step < 20'000; ++step) {
        if (pieces.size() < 50 || below(3) == 0) {
            pieces.push_back(allocated(anySize()));
            continue;
        }
        Piece& piece = pieces[random() % pieces.size()];
        ASSERT_TRUE(piece.isWhole(piece.size));
        if (below(2) == 0) {
            resize(piece, anySize());
        } else {
            methods_.xFree(piece.memory);
            piece = pieces.back();
            pieces.pop_back();
        }
    }
    for (const Piece& piece : pieces) {
        EXPECT_TRUE(piece.isWhole(piece.size));
        methods_.xFree(piece.memory);
    }
}

TEST_F(PoolMemory, GivesASmallPieceOutAgain) {
    const Piece piece = allocated(100);
    methods_.xFree(piece.memory);
    const Piece again = allocated(97);
    EXPECT_EQ(again.memory, piece.memory);
    methods_.xFree(again.memory);
}

TEST_F(PoolMemory, RoundsSizesUpToWhatAPieceHolds) {
    for (int size = 1; size < 3000; ++size) {
        const Piece piece = allocated(size);
        EXPECT_GE(methods_.xRoundup(size), size);
        EXPECT_EQ(methods_.xRoundup(size) % 8, 0);
        EXPECT_LE(methods_.xSize(piece.memory), methods_.xRoundup(size));
        methods_.xFree(piece.memory);
    }
}

// The sanitizer's own memory counts as well, and ends the program.
#ifndef __SANITIZE_ADDRESS__
TEST_F(PoolMemory, WithoutMemoryGivesNoPieceAndLeavesTheOthers) {
    if (!keepsLimits()) {
        GTEST_SKIP() << "this system keeps no limit of memory";
    }
    constexpr int kLarge = 1 << 20;
    constexpr int kBeyondAll = 1 << 30;  // the allocator has kept less of what was freed before
    EXPECT_EXIT(
        {
            const Piece small = allocated(50);
            const Piece large = allocated(kLarge);
            rlimit limit{};
            getrlimit(RLIMIT_AS, &limit);
            limit.rlim_cur = 0;
            setrlimit(RLIMIT_AS, &limit);
            const bool isRefused = methods_.xMalloc(kBeyondAll) == nullptr &&
                                   methods_.xRealloc(large.memory, kBeyondAll) == nullptr &&
                                   methods_.xRealloc(small.memory, kBeyondAll) == nullptr;
            // What the system's allocator still holds is soon handed out.
            while (methods_.xMalloc(1000) != nullptr) {
            }
            _exit(isRefused && small.isWhole(50) && large.isWhole(kLarge) ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}
#endif

}  // namespace tarvodb
