// Names every header of the object API shares: the classes, their pointer
// types and the reasons a camera or interface list changes.
#pragma once

#include <TavikC.h>

#include "TavikCPP/Export.h"
#include "TavikCPP/NetPointer.h"

namespace QRX::TvkAPI {

class AncillaryData;
class BasicLockable;
class Camera;
class Feature;
class FeatureContainer;
class Frame;
class ICameraFactory;
class ICameraListObserver;
class IFeatureObserver;
class IFrameObserver;
class IInterfaceListObserver;
class Interface;
class Mutex;
class Semaphore;

using AncillaryDataPtr = NetPointer<AncillaryData>;
using ConstAncillaryDataPtr = NetPointer<const AncillaryData>;
using CameraPtr = NetPointer<Camera>;
using FeaturePtr = NetPointer<Feature>;
using FramePtr = NetPointer<Frame>;
using InterfacePtr = NetPointer<Interface>;
using ICameraFactoryPtr = NetPointer<ICameraFactory>;
using ICameraListObserverPtr = NetPointer<ICameraListObserver>;
using IFeatureObserverPtr = NetPointer<IFeatureObserver>;
using IFrameObserverPtr = NetPointer<IFrameObserver>;
using IInterfaceListObserverPtr = NetPointer<IInterfaceListObserver>;
using MutexPtr = NetPointer<Mutex>;
using SemaphorePtr = NetPointer<Semaphore>;
using BasicLockablePtr = NetPointer<BasicLockable>;

// Why a camera or interface list observer is called.
enum UpdateTriggerType {
    UpdateTriggerPluggedIn = 0,
    UpdateTriggerPluggedOut = 1,
    UpdateTriggerOpenStateChanged = 3
};

} // namespace QRX::TvkAPI
