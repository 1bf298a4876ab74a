// The root of the kernel's classes is the kit's reference-counted object:
// gik::pObject is llk::pObject by another name. A class tag (the number the
// layer above types a node by) is its ClassCode.
#pragma once

#include "gik/Status.h"
#include "kit/Object.h"

namespace gik {

using llk::pObject;

} // namespace gik
