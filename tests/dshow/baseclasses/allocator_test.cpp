// The memory allocator: properties, commit and decommit, waiting for buffers, and samples coming home.
#include <chrono>
#include <cstdint>
#include <future>

#include "dshow/baseclasses/streams.h"
#include "tests/dshow/baseclasses/live_objects.h"

namespace {

using namespace std::chrono_literals;

class AllocatorTest : public LiveObjectTest {
protected:
    void SetUp() override
    {
        LiveObjectTest::SetUp();
        ASSERT_EQ(CMemAllocator::CreateInstance(allocator.Out()), S_OK);
    }
    void TearDown() override
    {
        allocator.Reset();
        LiveObjectTest::TearDown();
    }
    HRESULT Configure(LONG count, LONG size, LONG align = 1, LONG prefix = 0)
    {
        ALLOCATOR_PROPERTIES want{count, size, align, prefix};
        ALLOCATOR_PROPERTIES got{};
        return allocator->SetProperties(&want, &got);
    }
    HRESULT Take(CInterfacePtr<IMediaSample>& sample, DWORD flags = 0)
    {
        return allocator->GetBuffer(sample.Out(), nullptr, nullptr, flags);
    }

    CInterfacePtr<IMemAllocator> allocator;
};

TEST_F(AllocatorTest, SizesAreRoundedSoThatPrefixAndBufferFillWholeAlignmentUnits)
{
    const struct {
        ALLOCATOR_PROPERTIES want;
        HRESULT result;
        LONG size;
    } cases[] = {
        {{2, 100, 1, 0}, S_OK, 100},
        {{2, 100, 16, 0}, S_OK, 112},
        {{2, 100, 16, 8}, S_OK, 104},  // 8 + 104 = 112
        {{3, 64, 64, 0}, S_OK, 64},
        {{2, 100, 3, 0}, VFW_E_BADALIGN, 0},
        {{2, 100, 0, 0}, VFW_E_BADALIGN, 0},
    };
    for (const auto& c : cases) {
        ALLOCATOR_PROPERTIES want = c.want;
        ALLOCATOR_PROPERTIES got{};
        ASSERT_EQ(allocator->SetProperties(&want, &got), c.result);
        if (FAILED(c.result))
            continue;
        EXPECT_EQ(got.cbBuffer, c.size);
        EXPECT_EQ(got.cBuffers, c.want.cBuffers);
        ASSERT_EQ(allocator->Commit(), S_OK);
        std::vector<CInterfacePtr<IMediaSample>> taken(static_cast<size_t>(c.want.cBuffers));
        for (auto& sample : taken) {
            ASSERT_EQ(Take(sample), S_OK);
            BYTE* data = nullptr;
            sample->GetPointer(&data);
            EXPECT_EQ(sample->GetSize(), c.size);
            EXPECT_EQ((reinterpret_cast<uintptr_t>(data) - static_cast<uintptr_t>(c.want.cbPrefix)) %
                          static_cast<uintptr_t>(c.want.cbAlign),
                      0u);
        }
        taken.clear();
        ASSERT_EQ(allocator->Decommit(), S_OK);
    }
}

TEST_F(AllocatorTest, CommitStateGovernsBuffersAndProperties)
{
    CInterfacePtr<IMediaSample> sample;
    EXPECT_EQ(allocator->Commit(), VFW_E_SIZENOTSET);
    ASSERT_EQ(Configure(1, 32), S_OK);
    EXPECT_EQ(Take(sample), VFW_E_NOT_COMMITTED);
    ASSERT_EQ(allocator->Commit(), S_OK);
    EXPECT_EQ(Configure(1, 32), VFW_E_ALREADY_COMMITTED);
    ASSERT_EQ(Take(sample), S_OK);
    ASSERT_EQ(allocator->Decommit(), S_OK);
    EXPECT_EQ(Configure(1, 64), VFW_E_BUFFERS_OUTSTANDING);
    CInterfacePtr<IMediaSample> another;
    EXPECT_EQ(Take(another), VFW_E_NOT_COMMITTED);
    sample.Reset();
    EXPECT_EQ(Configure(1, 64), S_OK);
    ASSERT_EQ(allocator->Commit(), S_OK);
    ASSERT_EQ(Take(sample), S_OK);
    EXPECT_EQ(sample->GetSize(), 64);
}

TEST_F(AllocatorTest, NoWaitAnswersTimeoutWhenEveryBufferIsOut)
{
    ASSERT_EQ(Configure(2, 8), S_OK);
    ASSERT_EQ(allocator->Commit(), S_OK);
    CInterfacePtr<IMediaSample> a, b, c;
    ASSERT_EQ(Take(a, AM_GBF_NOWAIT), S_OK);
    ASSERT_EQ(Take(b, AM_GBF_NOWAIT), S_OK);
    EXPECT_EQ(Take(c, AM_GBF_NOWAIT), VFW_E_TIMEOUT);
    a.Reset();
    EXPECT_EQ(Take(c, AM_GBF_NOWAIT), S_OK);
}

TEST_F(AllocatorTest, WaitingGetBufferGetsTheSampleReleasedByItsLastUser)
{
    ASSERT_EQ(Configure(1, 8), S_OK);
    ASSERT_EQ(allocator->Commit(), S_OK);
    CInterfacePtr<IMediaSample> held;
    ASSERT_EQ(Take(held), S_OK);
    IMediaSample* const heldAddress = held.Get();
    held->AddRef();  // a second user

    auto waiting = std::async(std::launch::async, [this] {
        IMediaSample* sample = nullptr;
        const HRESULT hr = allocator->GetBuffer(&sample, nullptr, nullptr, 0);
        return std::make_pair(hr, sample);
    });
    EXPECT_EQ(waiting.wait_for(30ms), std::future_status::timeout);
    held.Reset();
    EXPECT_EQ(waiting.wait_for(30ms), std::future_status::timeout) << "one reference is still out";
    heldAddress->Release();
    const auto [hr, sample] = waiting.get();
    EXPECT_EQ(hr, S_OK);
    EXPECT_EQ(sample, heldAddress);
    sample->Release();
}

TEST_F(AllocatorTest, DecommitWakesWaitersWithNotCommitted)
{
    ASSERT_EQ(Configure(1, 8), S_OK);
    ASSERT_EQ(allocator->Commit(), S_OK);
    CInterfacePtr<IMediaSample> held;
    ASSERT_EQ(Take(held), S_OK);
    auto waiting = std::async(std::launch::async, [this] {
        CInterfacePtr<IMediaSample> sample;
        return Take(sample);
    });
    EXPECT_EQ(waiting.wait_for(30ms), std::future_status::timeout);
    ASSERT_EQ(allocator->Decommit(), S_OK);
    EXPECT_EQ(waiting.get(), VFW_E_NOT_COMMITTED);
}

TEST_F(AllocatorTest, ReturnedSampleForgetsWhatItsLastUserSet)
{
    ASSERT_EQ(Configure(1, 8), S_OK);
    ASSERT_EQ(allocator->Commit(), S_OK);
    CInterfacePtr<IMediaSample> sample;
    ASSERT_EQ(Take(sample), S_OK);
    REFERENCE_TIME start = 5, stop = 9;
    sample->SetTime(&start, &stop);
    sample->SetSyncPoint(TRUE);
    sample->SetDiscontinuity(TRUE);
    AM_MEDIA_TYPE type{};
    type.majortype = MEDIATYPE_Video;
    ASSERT_EQ(sample->SetMediaType(&type), S_OK);
    sample.Reset();

    ASSERT_EQ(Take(sample), S_OK);
    EXPECT_EQ(sample->GetTime(&start, &stop), VFW_E_SAMPLE_TIME_NOT_SET);
    EXPECT_EQ(sample->IsSyncPoint(), S_FALSE);
    EXPECT_EQ(sample->IsDiscontinuity(), S_FALSE);
    AM_MEDIA_TYPE* attached = reinterpret_cast<AM_MEDIA_TYPE*>(1);
    EXPECT_EQ(sample->GetMediaType(&attached), S_FALSE);
    EXPECT_EQ(attached, nullptr);
}

TEST_F(AllocatorTest, SampleTimesAndLengthFollowTheirRules)
{
    ASSERT_EQ(Configure(1, 8), S_OK);
    ASSERT_EQ(allocator->Commit(), S_OK);
    CInterfacePtr<IMediaSample> sample;
    ASSERT_EQ(Take(sample), S_OK);
    REFERENCE_TIME start = 100, stop = 0;
    sample->SetTime(&start, nullptr);
    EXPECT_EQ(sample->GetTime(&start, &stop), VFW_S_NO_STOP_TIME);
    EXPECT_EQ(stop, 101);
    EXPECT_EQ(sample->SetActualDataLength(9), VFW_E_BUFFER_OVERFLOW);
    EXPECT_EQ(sample->SetActualDataLength(8), S_OK);
    LONGLONG mediaStart = 0, mediaStop = 0;
    EXPECT_EQ(sample->GetMediaTime(&mediaStart, &mediaStop), VFW_E_MEDIA_TIME_NOT_SET);
}

TEST_F(AllocatorTest, AnOutstandingSampleKeepsItsAllocatorAlive)
{
    ASSERT_EQ(Configure(1, 8), S_OK);
    ASSERT_EQ(allocator->Commit(), S_OK);
    const LONG withAllocator = CBaseObject::ObjectsActive();
    CInterfacePtr<IMediaSample> sample;
    ASSERT_EQ(Take(sample), S_OK);
    allocator.Reset();
    EXPECT_EQ(CBaseObject::ObjectsActive(), withAllocator);
    BYTE* data = nullptr;
    ASSERT_EQ(sample->GetPointer(&data), S_OK);
    data[7] = 1;  // still valid memory
    sample.Reset();
    // The fixture checks that allocator and sample are gone now.
}

}  // namespace
