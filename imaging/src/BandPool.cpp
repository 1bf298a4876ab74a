#include "BandPool.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <vector>

namespace img {

namespace {

std::atomic<size_t> gPixelsPerBand{size_t(1) << 18};
std::atomic<uint32_t> gThreads{0};

uint32_t DefaultThreads() {
    if (const char* text = getenv("TAVIK_IMAGE_THREADS")) {
        const long n = strtol(text, nullptr, 10);
        if (n > 0) return static_cast<uint32_t>(std::min(n, 64L));
    }
    return std::clamp(std::thread::hardware_concurrency(), 1u, 16u);
}

// False when the band's work threw (its work buffer could not be had): the
// band is left unwritten, and nothing is thrown across a thread.
bool RunBand(const std::function<void(uint32_t, uint32_t)>& aWork, uint32_t aFirst, uint32_t aEnd) {
    try {
        aWork(aFirst, aEnd);
        return true;
    } catch (...) {
        return false;
    }
}

// Workers wait for a job; the caller takes bands too. One job at a time: a
// second caller meanwhile works alone rather than waiting.
class cBandPool {
public:
    static cBandPool& Get() {
        // Never destroyed: workers may still sleep at process exit.
        static cBandPool* pool = new cBandPool;
        return *pool;
    }

    // False when another job is running; otherwise aWritten says whether
    // every band was written.
    bool TryRun(uint32_t aLines, uint32_t aBands, uint32_t aThreads,
                const std::function<void(uint32_t, uint32_t)>& aWork, bool& aWritten) {
        std::unique_lock<std::mutex> gate(mJobGate, std::try_to_lock);
        if (!gate) return false;
        std::unique_lock<std::mutex> lock(mMutex);
        try {
            while (mThreads.size() + 1 < aThreads)
                mThreads.emplace_back([this] { Serve(); });
        } catch (...) {
            if (mThreads.empty()) return false;
        }
        mWork = &aWork;
        mLines = aLines;
        mBands = aBands;
        mNext = 0;
        mDone = 0;
        mFailed = false;
        ++mGeneration;
        mWake.notify_all();
        Work(lock);
        mFinished.wait(lock, [this] { return mDone == mBands; });
        mWork = nullptr;
        aWritten = !mFailed;
        return true;
    }

private:
    // Takes bands until none is left; called and returns with the lock held.
    void Work(std::unique_lock<std::mutex>& aLock) {
        while (mWork && mNext < mBands) {
            const uint32_t band = mNext++;
            const auto* work = mWork;
            const uint32_t first = static_cast<uint32_t>(uint64_t(mLines) * band / mBands);
            const uint32_t end = static_cast<uint32_t>(uint64_t(mLines) * (band + 1) / mBands);
            aLock.unlock();
            const bool written = RunBand(*work, first, end);
            aLock.lock();
            if (!written) mFailed = true;
            if (++mDone == mBands) mFinished.notify_all();
        }
    }

    void Serve() {
        std::unique_lock<std::mutex> lock(mMutex);
        uint64_t seen = mGeneration;
        for (;;) {
            mWake.wait(lock, [&] { return mGeneration != seen; });
            seen = mGeneration;
            Work(lock);
        }
    }

    std::mutex mJobGate;
    std::mutex mMutex;
    std::condition_variable mWake, mFinished;
    std::vector<std::thread> mThreads;
    const std::function<void(uint32_t, uint32_t)>* mWork = nullptr;
    uint32_t mLines = 0, mBands = 0, mNext = 0, mDone = 0;
    bool mFailed = false; // a band of the current job was left unwritten
    uint64_t mGeneration = 0;
};

} // namespace

TvkError_t ForEachBand(uint32_t aLines, size_t aPixels,
                       const std::function<void(uint32_t, uint32_t)>& aWork) {
    static const uint32_t defaultThreads = DefaultThreads();
    const uint32_t threads = gThreads.load() ? gThreads.load() : defaultThreads;
    const size_t perBand = std::max<size_t>(gPixelsPerBand.load(), 1);
    const uint32_t bands =
        static_cast<uint32_t>(std::min<size_t>({threads, aPixels / perBand, aLines}));
    bool written = false;
    if (bands < 2 || !cBandPool::Get().TryRun(aLines, bands, threads, aWork, written))
        written = RunBand(aWork, 0, aLines);
    return written ? TvkErrorSuccess : TvkErrorResources;
}

void SetBandLimits(size_t aPixelsPerBand, uint32_t aThreads) {
    gPixelsPerBand = aPixelsPerBand;
    gThreads = aThreads;
}

} // namespace img
