// All of the DirectShow base classes in one include, as filters written for Windows expect.
#pragma once

#include "platform/win32_dshow.h"

#include "dshow/baseclasses/allocator.h"
#include "dshow/baseclasses/am_event.h"
#include "dshow/baseclasses/base_filter.h"
#include "dshow/baseclasses/base_pin.h"
#include "dshow/baseclasses/critical_section.h"
#include "dshow/baseclasses/input_pin.h"
#include "dshow/baseclasses/interface_ptr.h"
#include "dshow/baseclasses/media_sample.h"
#include "dshow/baseclasses/media_type.h"
#include "dshow/baseclasses/output_pin.h"
#include "dshow/baseclasses/pin_enumerators.h"
#include "dshow/baseclasses/ref_time.h"
#include "dshow/baseclasses/renderer.h"
#include "dshow/baseclasses/transform_filter.h"
#include "dshow/baseclasses/unknown.h"
