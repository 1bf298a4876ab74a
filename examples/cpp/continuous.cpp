// Continuous acquisition: an observer is told of each frame on a library
// thread, counts it and queues it again; the main thread waits for enough
// frames and prints the rate.
#include "ExampleSupport.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

using namespace QRX::TvkAPI;

class CountingObserver : public IFrameObserver {
public:
    explicit CountingObserver(const CameraPtr& pCamera) : IFrameObserver(pCamera) {}

    void FrameReceived(const FramePtr pFrame) override {
        TvkFrameStatusType status = TvkFrameStatusInvalid;
        pFrame->GetReceiveStatus(status);
        {
            std::lock_guard<std::mutex> hold(m_Mutex);
            ++(status == TvkFrameStatusComplete ? m_Complete : m_Incomplete);
        }
        m_Counted.notify_all();
        // Nothing queues a frame again but its observer.
        m_pCamera->QueueFrame(pFrame);
    }

    // Waits for a number of complete frames.
    void WaitFor(int aCount) {
        std::unique_lock<std::mutex> hold(m_Mutex);
        m_Counted.wait(hold, [&] { return m_Complete >= aCount; });
    }
    int Incomplete() {
        std::lock_guard<std::mutex> hold(m_Mutex);
        return m_Incomplete;
    }

private:
    std::mutex m_Mutex;
    std::condition_variable m_Counted;
    int m_Complete = 0;
    int m_Incomplete = 0;
};

int main(int argc, char** argv) {
    const int frames = argc > 2 ? std::atoi(argv[2]) : 200;
    TavikSystem& system = TavikSystem::GetInstance();
    Check(system.Startup(), "Starting Tavik");
    CameraPtr camera = OpenCamera(argc, argv, TvkAccessModeFull);

    NetPointer<CountingObserver> observer(new CountingObserver(camera));
    const auto start = std::chrono::steady_clock::now();
    Check(camera->StartContinuousImageAcquisition(5, observer), "Starting the acquisition");
    observer->WaitFor(frames);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    Check(camera->StopContinuousImageAcquisition(), "Stopping the acquisition");

    std::printf("%d frames in %.3f s: %.1f frames/s (%d incomplete)\n", frames, elapsed.count(),
                frames / elapsed.count(), observer->Incomplete());
    camera->Close();
    system.Shutdown();
    return 0;
}
