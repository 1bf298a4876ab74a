// A band whose work buffer can't be allocated fails the whole call. This
// program replaces the global allocator so that a test can make every large
// allocation fail, on every thread, for a while.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>
#include <thread>
#include <vector>

#include "BandPool.h"
#include "TavikImageTransform.h"

namespace {
// Allocations of this many bytes or more fail while it is not 0.
std::atomic<size_t> gRefuseFrom{0};
} // namespace

// This allocator is malloc and free underneath, which the compiler cannot tell
// once it has inlined a delete.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(size_t aSize) {
    const size_t limit = gRefuseFrom.load(std::memory_order_relaxed);
    if (limit != 0 && aSize >= limit) throw std::bad_alloc();
    if (void* p = malloc(aSize ? aSize : 1)) return p;
    throw std::bad_alloc();
}
void* operator new[](size_t aSize) {
    return operator new(aSize);
}
void operator delete(void* aPointer) noexcept {
    free(aPointer);
}
void operator delete[](void* aPointer) noexcept {
    free(aPointer);
}
void operator delete(void* aPointer, size_t) noexcept {
    free(aPointer);
}
void operator delete[](void* aPointer, size_t) noexcept {
    free(aPointer);
}
#pragma GCC diagnostic pop

namespace {

// Wide lines, so that each band's line buffers are large; few lines. Threads
// keep their line buffers between calls, so each test uses a width no thread
// has seen yet.
constexpr uint32_t kHeight = 16;
constexpr size_t kRefuseFrom = 64 * 1024;

struct tRoutine {
    const char* name;
    std::function<TvkError_t(uint8_t*, const uint8_t*)> run;
};

// The routines that decode or filter lines into a buffer of their own.
std::vector<tRoutine> Routines(uint32_t aWidth) {
    return {
        {"Raw16 2x2",
         [aWidth](uint8_t* d, const uint8_t* s) {
             return TvkRaw16ImageTransform(d, s, aWidth, kHeight, TvkSimpleImageFormatBGR24, 0);
         }},
        {"Raw12 2x2",
         [aWidth](uint8_t* d, const uint8_t* s) {
             return TvkRaw12ImageTransform(d, s, aWidth, kHeight, TvkSimpleImageFormatBGR24, 0);
         }},
        {"2x2 LCAA",
         [aWidth](uint8_t* d, const uint8_t* s) {
             return TvkRaw8ImageTransform_IntLCAA(d, s, aWidth, kHeight, TvkSimpleImageFormatBGR24,
                                                  0);
         }},
    };
}

// Runs every routine with large allocations refused, then again without.
void FailThenRecover(uint32_t aWidth) {
    std::vector<uint8_t> source(size_t(aWidth) * kHeight * 2, 0x5A);
    std::vector<uint8_t> dest(size_t(aWidth) * kHeight * 3, 0);
    std::vector<uint8_t> expected(dest.size());
    for (const tRoutine& routine : Routines(aWidth)) {
        gRefuseFrom = kRefuseFrom;
        const TvkError_t failed = routine.run(dest.data(), source.data());
        gRefuseFrom = 0;
        EXPECT_EQ(failed, TvkErrorResources) << routine.name;
        // The pool serves the next call as before.
        ASSERT_EQ(routine.run(expected.data(), source.data()), TvkErrorSuccess) << routine.name;
        EXPECT_NE(std::count(expected.begin(), expected.end(), 0), ptrdiff_t(expected.size()))
            << routine.name;
    }
}

TEST(BandFaultTest, AFailedBandOnAPoolThreadFailsTheCall) {
    img::SetBandLimits(1, 4);
    FailThenRecover(1u << 16);
}

TEST(BandFaultTest, AFailedBandOnTheCallersThreadFailsTheCall) {
    img::SetBandLimits(size_t(1) << 30, 1);
    // A thread of its own, whose buffers are all still to be made.
    std::thread caller([] { FailThenRecover(1u << 15); });
    caller.join();
}

TEST(BandFaultTest, ForEachBandReportsABandThatThrew) {
    img::SetBandLimits(1, 4);
    std::atomic<uint32_t> lines{0};
    EXPECT_EQ(img::ForEachBand(64, 1 << 20,
                               [&](uint32_t aFirst, uint32_t aEnd) {
                                   lines += aEnd - aFirst;
                                   if (aFirst == 0) throw std::bad_alloc();
                               }),
              TvkErrorResources);
    // Every other band still ran.
    EXPECT_EQ(lines, 64u);
    EXPECT_EQ(img::ForEachBand(64, 1 << 20, [](uint32_t, uint32_t) {}), TvkErrorSuccess);
}

} // namespace
