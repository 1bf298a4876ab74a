// Tavik's object API (libTavikCPP.so): cameras, interfaces, features, frames
// and observers as objects, in namespace QRX::TvkAPI. Every operation returns
// a TvkErrorType; nothing throws, but for a constructor that cannot make its
// lock (std::bad_alloc).
#pragma once

#include "TavikCPP/AncillaryData.h"
#include "TavikCPP/BasicLockable.h"
#include "TavikCPP/Camera.h"
#include "TavikCPP/Condition.h"
#include "TavikCPP/ConditionHelper.h"
#include "TavikCPP/EnumEntry.h"
#include "TavikCPP/Feature.h"
#include "TavikCPP/FeatureContainer.h"
#include "TavikCPP/FileLogger.h"
#include "TavikCPP/Frame.h"
#include "TavikCPP/ICameraFactory.h"
#include "TavikCPP/ICameraListObserver.h"
#include "TavikCPP/IFeatureObserver.h"
#include "TavikCPP/IFrameObserver.h"
#include "TavikCPP/IInterfaceListObserver.h"
#include "TavikCPP/IRegisterDevice.h"
#include "TavikCPP/Interface.h"
#include "TavikCPP/Mutex.h"
#include "TavikCPP/MutexGuard.h"
#include "TavikCPP/NetPointer.h"
#include "TavikCPP/Semaphore.h"
#include "TavikCPP/TavikSystem.h"
