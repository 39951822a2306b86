// CLSID_SystemClock: a time that never goes back, in 100 ns units; one-shot and periodic advise
// requests signalling base-class events; Unadvise and the argument checks.
#include <thread>

#include "tests/dshow/runtime/runtime_test_support.h"
#include "tests/dshow/support/ze_filter_harness.h"

namespace zetest {
namespace {

constexpr REFERENCE_TIME kMillisecond = 10000;
constexpr DWORD kPatience = 5000;  // milliseconds a signal may take on a loaded machine

class SystemClockTest : public RuntimeTest {
protected:
    void SetUp() override {
        RuntimeTest::SetUp();
        clock_ = Create<IReferenceClock>(CLSID_SystemClock, IID_IReferenceClock);
        ASSERT_TRUE(clock_);
    }
    REFERENCE_TIME Now() {
        REFERENCE_TIME now = 0;
        EXPECT_TRUE(SUCCEEDED(clock_->GetTime(&now)));
        return now;
    }
    ComPtr<IReferenceClock> clock_;
};

TEST_F(SystemClockTest, TimeMovesForwardInHundredNanosecondUnits) {
    const REFERENCE_TIME first = Now();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    const REFERENCE_TIME second = Now();
    EXPECT_GE(second - first, 30 * kMillisecond);
    EXPECT_LT(second - first, 60 * 1000 * kMillisecond);  // not in nanoseconds
    EXPECT_EQ(clock_->GetTime(nullptr), E_POINTER);
}

TEST_F(SystemClockTest, OneShotAdvisesSignalTheirEventOnceTheirTimeHasCome) {
    const struct {
        const char* what;
        REFERENCE_TIME fromNow;
    } cases[] = {{"20 ms ahead", 20 * kMillisecond}, {"already past", -kMillisecond * 1000}};
    for (const auto& c : cases) {
        CAMEvent event(true);
        DWORD_PTR cookie = 0;
        // A time in the past is given as an earlier base time.
        const REFERENCE_TIME base = Now() + (c.fromNow < 0 ? c.fromNow : 0);
        const REFERENCE_TIME stream = c.fromNow > 0 ? c.fromNow : 0;
        ASSERT_EQ(clock_->AdviseTime(base, stream, event.Handle(), &cookie), S_OK) << c.what;
        EXPECT_NE(cookie, 0u);
        ASSERT_TRUE(event.Wait(kPatience)) << c.what;
        EXPECT_GE(Now(), base + stream) << c.what;
        EXPECT_EQ(clock_->Unadvise(cookie), S_FALSE) << c.what << ": a fired one-shot is gone";
    }
}

TEST_F(SystemClockTest, PeriodicAdvisesRepeatUntilUnadvised) {
    CAMEvent event(false);
    DWORD_PTR cookie = 0;
    ASSERT_EQ(clock_->AdvisePeriodic(Now(), 5 * kMillisecond, event.Handle(), &cookie), S_OK);
    for (int period = 0; period < 3; ++period) ASSERT_TRUE(event.Wait(kPatience)) << period;
    ASSERT_EQ(clock_->Unadvise(cookie), S_OK);
    event.Reset();
    EXPECT_FALSE(event.Wait(50));
}

TEST_F(SystemClockTest, UnadvisedRequestsNeverFire) {
    CAMEvent event(true);
    DWORD_PTR cookie = 0;
    ASSERT_EQ(clock_->AdviseTime(Now(), 40 * kMillisecond, event.Handle(), &cookie), S_OK);
    ASSERT_EQ(clock_->Unadvise(cookie), S_OK);
    EXPECT_FALSE(event.Wait(100));
}

TEST_F(SystemClockTest, BadArgumentsAreRefused) {
    CAMEvent event(true);
    DWORD_PTR cookie = 0;
    const struct {
        const char* what;
        HRESULT expected;
        HRESULT actual;
    } cases[] = {
        {"no cookie", E_POINTER, clock_->AdviseTime(0, 0, event.Handle(), nullptr)},
        {"no event", E_INVALIDARG, clock_->AdviseTime(Now(), 0, 0, &cookie)},
        {"negative time", E_INVALIDARG, clock_->AdviseTime(-1, 0, event.Handle(), &cookie)},
        {"overflowing time", E_INVALIDARG, clock_->AdviseTime(INT64_MAX, 1, event.Handle(), &cookie)},
        {"zero period", E_INVALIDARG, clock_->AdvisePeriodic(Now(), 0, event.Handle(), &cookie)},
        {"no semaphore", E_INVALIDARG, clock_->AdvisePeriodic(Now(), kMillisecond, 0, &cookie)},
        {"unknown cookie", S_FALSE, clock_->Unadvise(12345)},
    };
    for (const auto& c : cases) EXPECT_EQ(c.actual, c.expected) << c.what;
}

}  // namespace
}  // namespace zetest
