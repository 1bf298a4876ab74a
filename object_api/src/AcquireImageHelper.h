// Whole acquisitions in one call. The helper remembers, as a stack, what has
// to be undone, and undoes it in reverse order.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "TavikCPP/Camera.h"

namespace QRX::TvkAPI {

// In the order their undoing is pushed.
enum tear_down_tasks {
    tear_down_revoke = 0,
    tear_down_flush = 1,
    tear_down_end_capture = 2,
    tear_down_stop_acquisition = 3
};

class AcquireImageHelper {
public:
    explicit AcquireImageHelper(Camera& Cam);
    // Undoes whatever is left; the result is dropped.
    ~AcquireImageHelper();
    AcquireImageHelper(const AcquireImageHelper&) = delete;
    AcquireImageHelper& operator=(const AcquireImageHelper&) = delete;

    // Pops the task on top.
    tear_down_tasks GetTask();
    // A frame at least PayloadSize bytes large is kept, else a new one made.
    static TvkErrorType SetupFrame(FramePtr& pFrame, int64_t PayloadSize);
    // Goes on past failures; answers the first one.
    static TvkErrorType AnnounceFrames(Camera& Cam, FramePtr* pFrames, uint32_t nFrameCount,
                                       int64_t nPayloadSize, uint32_t& nFramesAnnounced);
    static TvkErrorType AnnounceFrames(Camera& Cam, std::vector<FramePtr>& Frames,
                                       uint32_t nBufferCount, int64_t nPayloadSize,
                                       const IFrameObserverPtr& Observer);
    // Announces, starts the capture, queues and starts the camera,
    // remembering each step to undo.
    TvkErrorType Prepare(FramePtr& pFrame, int64_t PayloadSize);
    TvkErrorType Prepare(FramePtr* pFrames, uint32_t nFrameCount, int64_t nPayloadSize,
                         uint32_t& nFramesQueued);
    TvkErrorType TearDown();

private:
    void Push(tear_down_tasks aTask) { m_Tasks[m_nTasks++] = aTask; }
    void Pop() { --m_nTasks; }

    // At most one of each task is ever on the stack.
    std::array<tear_down_tasks, 4> m_Tasks{};
    size_t m_nTasks = 0;
    Camera& m_Camera;
};

// By-name access to an integer feature and a command of a camera.
TvkErrorType GetFeatureValueInt(Camera& cam, const char* name, int64_t& val);
TvkErrorType RunFeatureCommand(Camera& cam, const char* name);

} // namespace QRX::TvkAPI
