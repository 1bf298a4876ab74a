// The observer interfaces.
#include <utility>

#include "TavikCPP/Camera.h"
#include "TavikCPP/ICameraListObserver.h"
#include "TavikCPP/IFeatureObserver.h"
#include "TavikCPP/IFrameObserver.h"
#include "TavikCPP/IInterfaceListObserver.h"

namespace QRX::TvkAPI {

IFeatureObserver::~IFeatureObserver() = default;
ICameraListObserver::~ICameraListObserver() = default;
IInterfaceListObserver::~IInterfaceListObserver() = default;

IFrameObserver::IFrameObserver(CameraPtr pCamera) : m_pCamera(std::move(pCamera)) {}
IFrameObserver::~IFrameObserver() = default;

} // namespace QRX::TvkAPI
