#include "dshow/decoders/ze_decoder_table.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <utility>

namespace zedec {
namespace {

// libavformat keeps its RIFF table as (codec id, tag) pairs ending with AV_CODEC_ID_NONE, but the
// pair type is not in its public headers. The pairs are read through a record of the same two
// fields; the first pair is checked against the public lookup before the table is trusted.
struct RiffPair {
    AVCodecID id;
    unsigned int tag;
};

std::vector<std::pair<DWORD, AVCodecID>> RiffVideoTags()
{
    std::vector<std::pair<DWORD, AVCodecID>> tags;
    const AVCodecTag* table = avformat_get_riff_video_tags();
    const AVCodecTag* const tables[] = {table, nullptr};
    const RiffPair* pair = reinterpret_cast<const RiffPair*>(table);
    if (pair->id != AV_CODEC_ID_NONE && av_codec_get_id(tables, pair->tag) == pair->id) {
        for (; pair->id != AV_CODEC_ID_NONE; ++pair)
            tags.emplace_back(pair->tag, pair->id);
        return tags;
    }
    // A libavformat whose table has another shape: the public lookup still gives each codec's
    // principal tag.
    const AVCodecDescriptor* descriptor = nullptr;
    while ((descriptor = avcodec_descriptor_next(descriptor)) != nullptr) {
        unsigned int tag = 0;
        if (descriptor->type == AVMEDIA_TYPE_VIDEO && av_codec_get_tag2(tables, descriptor->id, &tag))
            tags.emplace_back(tag, descriptor->id);
    }
    return tags;
}

std::string LongName(AVCodecID codec)
{
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec);
    if (descriptor && descriptor->long_name)
        return descriptor->long_name;
    return avcodec_get_name(codec);
}

// MPEG-4 part 2 FOURCCs that files carry in letter cases the RIFF table does not list.
const DWORD kExtraMpeg4Fourccs[] = {ZeFourcc('d', 'i', 'v', 'x'), ZeFourcc('x', 'v', 'i', 'd'),
                                    ZeFourcc('d', 'x', '5', '0'), ZeFourcc('M', 'P', '4', 'V')};

// Packed YUV formats of their own codec that DirectShow decoders put out, left out for the same
// reason as the rawvideo FOURCCs.
const DWORD kOutputFourccs[] = {ZeFourcc('Y', '4', '1', 'P'), ZeFourcc('A', 'Y', 'U', 'V')};

bool IsOutputFourcc(DWORD tag)
{
    return std::find(std::begin(kOutputFourccs), std::end(kOutputFourccs), tag) != std::end(kOutputFourccs);
}

// Generic rows rank just below the named ones, still well above MERIT_UNLIKELY so that
// intelligent connect tries them.
constexpr DWORD kGenericMerit = MERIT_NORMAL - 1;

std::vector<DecoderRow> BuildTable()
{
    // Each FOURCC belongs to the codec of its first entry, as libavformat's own lookup has it.
    std::vector<std::pair<DWORD, AVCodecID>> tags;
    std::set<DWORD> seen;
    for (const auto& [tag, codec] : RiffVideoTags())
        if (tag != 0 && codec != AV_CODEC_ID_RAWVIDEO && !IsOutputFourcc(tag) && avcodec_find_decoder(codec) &&
            seen.insert(tag).second)
            tags.emplace_back(tag, codec);
    auto tagsOf = [&tags](AVCodecID codec) {
        std::vector<DWORD> out;
        for (const auto& [tag, id] : tags)
            if (id == codec)
                out.push_back(tag);
        return out;
    };
    auto has = [&seen](DWORD tag) { return seen.count(tag) != 0; };

    std::vector<DecoderRow> rows;
    std::set<DWORD> claimed;
    auto addNamed = [&](DecoderRow row) {
        claimed.insert(row.fourccs.begin(), row.fourccs.end());
        rows.push_back(std::move(row));
    };

    // The DV Video Decoder takes consumer DV (dvsd) and the HD and long-play variants the RIFF
    // table maps to libavcodec's DV decoder.
    DecoderRow dv{CLSID_DVVideoCodec, "DV Video Decoder", MERIT_NORMAL, AV_CODEC_ID_DVVIDEO, {}, true};
    for (DWORD tag : {ZeFourcc('d', 'v', 's', 'd'), ZeFourcc('d', 'v', 'h', 'd'), ZeFourcc('d', 'v', 's', 'l')})
        if (has(tag))
            dv.fourccs.push_back(tag);
    addNamed(dv);

    addNamed({CLSID_MjpegDec, "MJPEG Decompressor", MERIT_NORMAL, AV_CODEC_ID_MJPEG, {ZeFourcc('M', 'J', 'P', 'G')}});

    // Both MPEG-4 part 2 decoders take every FOURCC of the codec.
    std::vector<DWORD> mpeg4 = tagsOf(AV_CODEC_ID_MPEG4);
    for (DWORD tag : kExtraMpeg4Fourccs)
        if (std::find(mpeg4.begin(), mpeg4.end(), tag) == mpeg4.end())
            mpeg4.push_back(tag);
    addNamed({ZeFourccSubtype(ZeFourcc('d', 'i', 'v', 'x')), "DivX Decoder Filter", MERIT_NORMAL,
              AV_CODEC_ID_MPEG4, mpeg4});
    addNamed({ZeFourccSubtype(ZeFourcc('x', 'v', 'i', 'd')), "XviD MPEG-4 Video Decoder", MERIT_NORMAL,
              AV_CODEC_ID_MPEG4, mpeg4});

    // One generic row per remaining codec, in the order the RIFF table first names it.
    std::map<AVCodecID, size_t> generic;
    for (const auto& [tag, codec] : tags) {
        if (claimed.count(tag))
            continue;
        auto found = generic.find(codec);
        if (found == generic.end()) {
            generic.emplace(codec, rows.size());
            rows.push_back({GenericDecoderClsid(codec), LongName(codec) + " Decoder", kGenericMerit, codec, {tag}});
        } else {
            rows[found->second].fourccs.push_back(tag);
        }
    }
    return rows;
}

}  // namespace

CLSID GenericDecoderClsid(AVCodecID codec)
{
    return CLSID{static_cast<DWORD>(codec), 0x7A65, 0x4176, {0x80, 0x00, 0x6C, 0x69, 0x62, 0x61, 0x76, 0x63}};
}

const std::vector<DecoderRow>& DecoderTable()
{
    static const std::vector<DecoderRow> table = BuildTable();
    return table;
}

const DecoderRow* FindDecoderRow(REFCLSID clsid)
{
    for (const DecoderRow& row : DecoderTable())
        if (IsEqualCLSID(row.clsid, clsid))
            return &row;
    return nullptr;
}

AVCodecID CodecOfFourcc(DWORD fourcc)
{
    const AVCodecTag* const tables[] = {avformat_get_riff_video_tags(), nullptr};
    return av_codec_get_id(tables, fourcc);
}

bool FourccOfSubtype(const GUID& subtype, DWORD* fourcc)
{
    if (!IsEqualGUID(ZeFourccSubtype(subtype.Data1), subtype))
        return false;
    *fourcc = subtype.Data1;
    return true;
}

}  // namespace zedec
