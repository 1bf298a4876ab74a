// Watches the camera list: an observer hears a camera leave and come back,
// while the simulator unplugs and plugs it through its control entry point.
#include "ExampleSupport.h"

#include <TavikSimControl.h>

#include <condition_variable>
#include <cstring>
#include <dlfcn.h>
#include <mutex>
#include <string>

using namespace QRX::TvkAPI;

class ListWatcher : public ICameraListObserver {
public:
    void CameraListChanged(CameraPtr pCamera, UpdateTriggerType reason) override {
        std::string id;
        pCamera->GetID(id);
        std::printf("  %s: %s\n", id.c_str(),
                    reason == UpdateTriggerPluggedIn    ? "plugged in"
                    : reason == UpdateTriggerPluggedOut ? "plugged out"
                                                        : "open state changed");
        std::lock_guard<std::mutex> hold(m_Mutex);
        m_Last = reason;
        ++m_Events;
        m_Changed.notify_all();
    }
    // Waits for the next event of this kind.
    bool WaitFor(UpdateTriggerType aReason) {
        std::unique_lock<std::mutex> hold(m_Mutex);
        const int seen = m_Events;
        return m_Changed.wait_for(hold, std::chrono::seconds(10),
                                  [&] { return m_Events > seen && m_Last == aReason; });
    }

private:
    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    UpdateTriggerType m_Last = UpdateTriggerOpenStateChanged;
    int m_Events = 0;
};

// The control entry point of the simulator the library loaded.
TavikSimControl_t SimulatorControl() {
    const char* path = std::getenv("GENICAM_GENTL64_PATH");
    std::string file = std::string(path ? path : ".") + "/TavikSim.cti";
    void* module = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
    return module ? reinterpret_cast<TavikSimControl_t>(dlsym(module, "TavikSimControl")) : nullptr;
}

int main(int argc, char** argv) {
    const std::string camera = argc > 1 ? argv[1] : "SimCam-Mono";
    TavikSystem& system = TavikSystem::GetInstance();
    Check(system.Startup(), "Starting Tavik");
    TavikSimControl_t control = SimulatorControl();
    if (!control) Check(TvkErrorNotFound, "Reaching the simulator");

    // A camera the system knows is reported when it leaves.
    CameraPtr known;
    Check(system.GetCameraByID(camera.c_str(), known), "Finding the camera");

    NetPointer<ListWatcher> watcher(new ListWatcher());
    Check(system.RegisterCameraListObserver(watcher), "Watching the camera list");
    std::printf("unplugging %s\n", camera.c_str());
    control(("unplug " + camera).c_str());
    if (!watcher->WaitFor(UpdateTriggerPluggedOut)) Check(TvkErrorTimeout, "Waiting");
    std::printf("plugging %s back\n", camera.c_str());
    control(("plug " + camera).c_str());
    if (!watcher->WaitFor(UpdateTriggerPluggedIn)) Check(TvkErrorTimeout, "Waiting");
    Check(system.UnregisterCameraListObserver(watcher), "Leaving the camera list");

    system.Shutdown();
    return 0;
}
