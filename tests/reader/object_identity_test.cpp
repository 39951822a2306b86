// The plug-in object's identity and status: interfaces, reference count and the module's live count,
// host parameters, GetState, module information and the slots that do no work.
#include <cstring>

#include "tests/support/reader_module.h"

namespace readertest {
namespace {

using zetest::Descriptor;
using zetest::ReaderTest;

class ObjectIdentity : public ReaderTest {};

TEST_F(ObjectIdentity, EveryHostInterfaceIsOneObject) {
    void* unknown = nullptr;
    void* first = nullptr;
    ASSERT_EQ(S_OK, video->QueryInterface(IID_IUnknown, &unknown));
    ASSERT_EQ(S_OK, raw->QueryInterface(IID_IZEVideoStream, &first));
    EXPECT_EQ(unknown, first);
    EXPECT_EQ(static_cast<void*>(video), first);
    static_cast<IUnknown*>(unknown)->Release();
    static_cast<IUnknown*>(first)->Release();

    // Every interface reaches every other one.
    IUnknown* all[] = {video, exchange, plugIn, status, audio, raw, color};
    const IID* iids[] = {&IID_IZEVideoStream, &IID_IZEClientServerExchange2, &IID_IZEVideoImportPlugIn, &IID_IZEStatus,
                         &IID_IZEBasicAudioReader, &IID_IZERawStream, &IID_IZEColorFormatSupport};
    for (IUnknown* from : all) {
        for (size_t i = 0; i < 7; ++i) {
            void* got = nullptr;
            ASSERT_EQ(S_OK, from->QueryInterface(*iids[i], &got));
            EXPECT_EQ(static_cast<void*>(all[i]), got);
            static_cast<IUnknown*>(got)->Release();
        }
    }
    EXPECT_TRUE(NothingReported());
}

TEST_F(ObjectIdentity, UnknownInterfaceLeavesThePointerAlone) {
    const IID other = {0x12345678, 0x1, 0x2, {1, 2, 3, 4, 5, 6, 7, 8}};
    void* untouched = reinterpret_cast<void*>(0x1234);
    EXPECT_EQ(E_NOINTERFACE, status->QueryInterface(other, &untouched));
    EXPECT_EQ(reinterpret_cast<void*>(0x1234), untouched);
    EXPECT_EQ(E_NOINTERFACE, status->QueryInterface(IID_IClassFactory, &untouched));
    EXPECT_TRUE(NothingReported());

    EXPECT_TRUE(Fails(audio->QueryInterface(IID_IZEStatus, nullptr), E_POINTER, "CZEAviReader::QueryInterface"));
}

TEST_F(ObjectIdentity, OneReferenceCountAndTheModuleLiveCount) {
    ASSERT_NE(nullptr, zetest::ReaderModule().canUnloadNow);
    // The fixture holds eight references through different interfaces: all count on one object.
    EXPECT_EQ(9u, raw->AddRef());
    EXPECT_EQ(10u, color->AddRef());
    EXPECT_EQ(9u, video->Release());
    EXPECT_EQ(8u, exchange->Release());
    EXPECT_EQ(S_FALSE, zetest::ReaderModule().canUnloadNow());

    IUnknown* held[] = {video, exchange, plugIn, status, audio, raw, color, object};
    for (IUnknown*& p : held) p->Release();
    video = nullptr, exchange = nullptr, plugIn = nullptr, status = nullptr;
    audio = nullptr, raw = nullptr, color = nullptr, object = nullptr;
    // Last release: the object is gone and the module may unload.
    EXPECT_EQ(S_OK, zetest::ReaderModule().canUnloadNow());

    IUnknown* again = CreateObject();
    ASSERT_NE(nullptr, again);
    EXPECT_EQ(S_FALSE, zetest::ReaderModule().canUnloadNow());
    EXPECT_EQ(0u, again->Release());
    EXPECT_EQ(S_OK, zetest::ReaderModule().canUnloadNow());
}

TEST_F(ObjectIdentity, HostParamsTakeAndDropTheLog) {
    // Opening the audio of "" makes the report context empty (the open then fails).
    EXPECT_TRUE(FAILED(audio->InitAudioReader("", 0, 0, nullptr)));
    TakeReports();
    zetest::HostLogCapture own;
    ZeHostParams params{};
    params.flags = ZE_HOSTPARAM_USE_LOG;
    params.hostLog = &own;
    ASSERT_EQ(S_OK, status->SetHostParams(&params));
    EXPECT_EQ(2, own.refs);
    EXPECT_EQ(E_NOTIMPL, audio->GetFormatInfo(nullptr));
    ASSERT_EQ(1u, own.lines.size());
    // The line as the host receives it: prefix, report line with CR LF, and a further LF; kind 2.
    EXPECT_EQ("AVI Reader :: [80004001] not implemented ### CZEAviReader::GetFormatInfo ### \r\n\n", own.lines[0]);
    EXPECT_EQ(2, own.kinds[0]);
    EXPECT_EQ(0, own.wrongSlotCalls);

    // Without the log flag the object lets go of its reference and takes none.
    params.flags = 0;
    ASSERT_EQ(S_OK, status->SetHostParams(&params));
    EXPECT_EQ(1, own.refs);
    // A null log with the flag set is ignored as well.
    params.flags = ZE_HOSTPARAM_USE_LOG;
    params.hostLog = nullptr;
    ASSERT_EQ(S_OK, status->SetHostParams(&params));

    params.hostLog = &log;
    ASSERT_EQ(S_OK, status->SetHostParams(&params));
    EXPECT_TRUE(Fails(status->SetHostParams(nullptr), E_POINTER, "CZEAviReader::SetHostParams"));
}

TEST_F(ObjectIdentity, StateOfAFreshObject) {
    DWORD value = 77;
    DWORD detail[2] = {9, 9};
    EXPECT_TRUE(Fails(status->GetState(&value, nullptr, 1), E_POINTER, "CZEAviReader::GetState"));

    // No undecodable video recorded: kind 1 has nothing to say.
    EXPECT_EQ(S_FALSE, status->GetState(&value, detail, 1));
    EXPECT_EQ(77u, value);
    for (DWORD kind = 2; kind <= 7; ++kind) {
        value = 77;
        EXPECT_EQ(S_OK, status->GetState(&value, detail, kind));
        EXPECT_EQ(0u, value);
    }
    EXPECT_EQ(S_FALSE, status->GetState(&value, detail, 8));
    EXPECT_EQ(S_FALSE, status->GetState(&value, detail, 0));
    // Without a value pointer the kind is compared with the state value (0).
    EXPECT_EQ(S_OK, status->GetState(nullptr, detail, 0));
    EXPECT_EQ(S_FALSE, status->GetState(nullptr, detail, 1));
    EXPECT_EQ(9u, detail[0]);
    EXPECT_EQ(9u, detail[1]);
    EXPECT_EQ(S_OK, status->StatusReserved4(1, 2, nullptr, nullptr));
    EXPECT_TRUE(NothingReported());
}

TEST_F(ObjectIdentity, ModuleInformation) {
    EXPECT_TRUE(Fails(plugIn->GetModuleInfo(nullptr), E_POINTER, "CZEAviReader::GetModuleInfo"));

    ZeModuleInfo info;
    std::memset(&info, 0xAB, sizeof(info));
    ASSERT_EQ(S_OK, plugIn->GetModuleInfo(&info));
    EXPECT_EQ(sizeof(void*) == 4 ? 36u : 48u, info.cbSize);
    EXPECT_TRUE(IsEqualCLSID(CLSID_ZEAviReaderModule, info.clsid));
    EXPECT_EQ(1u, info.version);
    EXPECT_EQ(0u, info.reserved);
    ASSERT_NE(nullptr, info.fileType);
    ASSERT_NE(nullptr, info.description);
    EXPECT_STREQ("AVI", info.fileType);
    EXPECT_STREQ("AVI Import Module", info.description);
    CoTaskMemFree(info.fileType);
    CoTaskMemFree(info.description);
    EXPECT_TRUE(NothingReported());
}

TEST_F(ObjectIdentity, FrameDeliveryIsNotAvailableAndReservedSlotsDoNothing) {
    const LONGLONG time = 0;
    void* picture = reinterpret_cast<void*>(0x55);
    EXPECT_TRUE(Fails(video->InitVideoStream(nullptr, &ZeMediaGuid::Rgb24, 0, 0, 0, nullptr),
                      E_POINTER, "CZEAviReader::InitVideoStream"));
    EXPECT_TRUE(Fails(video->InitVideoStream("x.avi", &ZeMediaGuid::Rgb24, 0, 0, 0, nullptr),
                      E_NOTIMPL, "CZEAviReader::InitVideoStream"));
    EXPECT_TRUE(Fails(video->GetVideoFrame(2, nullptr, nullptr, &picture, nullptr, 0),
                      E_POINTER, "CZEAviReader::GetVideoFrame"));
    EXPECT_TRUE(Fails(video->GetVideoFrame(2, &time, nullptr, &picture, nullptr, 0),
                      E_NOTIMPL, "CZEAviReader::GetVideoFrame"));
    EXPECT_EQ(reinterpret_cast<void*>(0x55), picture);
    LONGLONG position = 0;
    EXPECT_TRUE(Fails(video->GetSpecialStreamPos(0, &position, 0), E_NOTIMPL, "CZEAviReader::GetSpecialStreamPos"));
    EXPECT_TRUE(Fails(color->HandleColorFormat(0, &ZeMediaGuid::Yuy2, 0, 0, nullptr, nullptr),
                      E_NOTIMPL, "CZEAviReader::HandleColorFormat"));
    EXPECT_EQ(S_OK, video->CloseVideoStream());
    EXPECT_EQ(S_OK, video->VideoReserved7(1, 2, nullptr));
    EXPECT_EQ(S_OK, video->VideoReserved8());
    EXPECT_EQ(S_OK, video->VideoReserved10(1, 2, nullptr, nullptr));
    EXPECT_EQ(S_OK, audio->AudioReserved7(1, nullptr));
    EXPECT_EQ(S_OK, audio->AudioReserved8());
    EXPECT_EQ(E_NOTIMPL, exchange->ExchangeReserved6(1, 2, 3, nullptr, nullptr, nullptr));
    EXPECT_TRUE(NothingReported());
}

}  // namespace
}  // namespace readertest
