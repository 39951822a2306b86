// Test harness for DirectShow filters, without a graph manager:
//   TestSourceFilter   pushes the samples a test gives it (bytes, times, flags, an in-stream type) on the
//                      calling thread and returns the downstream answer;
//   CollectingRenderer a CBaseRenderer that keeps every rendered sample (bytes, type, times, flags,
//                      thread) and counts end of stream;
//   FilterChain        source -> filter(s) under test -> renderer, pins connected directly, states changed
//                      downstream first, events collected in an EventLog;
//   ManualClock        a reference clock the test moves by hand;
//   VideoInfoType, PlainType   media types to offer and accept.
//
// Typical use:
//   auto* source = new zetest::TestSourceFilter({zetest::VideoInfoType(MEDIASUBTYPE_dvsd, 720, 576, 24, dvsd)});
//   auto* renderer = new zetest::CollectingRenderer();
//   zetest::FilterChain chain;
//   chain.Add(source, "source"); chain.Add(decoder, "decoder"); chain.Add(renderer, "renderer");
//   ASSERT_EQ(chain.ConnectAll(), S_OK);
//   chain.Run();                                 // no clock: renders on the pushing thread
//   source->PushBytes(frame);                    // renderer->Samples() now holds the output
// The chain holds a reference on each filter added; keep raw pointers for calls on the concrete class.
#pragma once

#include "tests/dshow/support/collecting_renderer.h"
#include "tests/dshow/support/event_log.h"
#include "tests/dshow/support/filter_chain.h"
#include "tests/dshow/support/manual_clock.h"
#include "tests/dshow/support/test_media_types.h"
#include "tests/dshow/support/test_source_filter.h"
