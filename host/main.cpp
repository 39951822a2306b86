// avihost: a command-line host for the AVI import module.
#include <cstdio>
#include <CLI/CLI.hpp>

#include "host/commands.h"

namespace {

const char* const kInfoJson = R"(JSON (--json):
  {"file": str,
   "module": {"clsid": str, "fileType": str, "description": str},
   "streamInfo": {"width", "height", "displayWidth", "displayHeight", "frameRate", "aspectRatio",
                  "frameCount", "capabilities", "streamKinds", "formatFlags",
                  "audio": {"wFormatTag", "nChannels", "nSamplesPerSec", "nAvgBytesPerSec",
                            "nBlockAlign", "wBitsPerSample"}} | null,
   "streamInfoError": str (only when streamInfo is null),
   "avih": {"dwMicroSecPerFrame", ..., "dwHeight", "dwReserved": [4 numbers]},
   "skippedStreams": n,
   "streams": [{"stream": n, "role": "video"|"video2"|"audio"|"other", "strn": str,
                "strh": {"fccType": FOURCC, "fccHandler": FOURCC, "dwFlags", ..., "dwLength",
                         "rcFrame": {"left", "top", "right", "bottom"}},
                "strf": {"biSize", ..., "biCompression": FOURCC, ..., "extraBytes"}
                      | {"wFormatTag", ..., "cbSize"} | {"dvInfo": [numbers]} | null,
                "index": {"entries", "keyFrames", "bytes", "firstPosition", "lastPosition"}}],
   "colorFormats": [str]})";

const char* const kIndexJson = R"(JSON (--json): [{"stream", "entry", "ckid": FOURCC, "dwFlags", "keyFrame": bool,
                  "qwOffset", "dwSize", "qwPosition"}]  (qwPosition: file position of the chunk data))";

const char* const kDvJson = R"(JSON (--json):
  {"file": str, "frame": n,
   "dvVideo": {"sixtyFields", "aspectRatio", "displayCode", "interlaceCode", "compressionCode",
               "recordingStartCode", "recordingDateTime": str},
   "dvAudio": {"sampleRate", "bitsPerSample", "audioModeCode", "firstChannel", "secondChannel"},
   "recordingDateTime": str | null,
   "timestamp": {"seconds", "minutes", "hours", "dayOfMonth", "month" (0 = January),
                 "yearsSince1900"} | null,
   "camera": {"Iris": {"id": n, "value": n}, ..., "ShutterSpeedConsumer": {...}}
             (id and value null when the frame does not carry the value)})";

int ReportFailure(const HostError& error) {
    // avihost: error 0x80040012 E_AVI_NOVALIDFILE, "no valid avi file" in CZeAviFileParser::Parse, while opening x.avi
    std::string line = "avihost: error ";
    char code[16];
    std::snprintf(code, sizeof(code), "0x%08X", static_cast<unsigned>(error.Code()));
    line += code;
    if (*StatusName(error.Code())) line += std::string(" ") + StatusName(error.Code());
    if (!error.Report().empty()) line += ", " + error.Report();
    line += std::string(", while ") + error.what();
    std::fprintf(stderr, "%s\n", line.c_str());
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"avihost: reads AVI files through the AVI import module, as a video-editing host does.\n"
                 "The module is loaded from beside this program unless --module names it, or created by its\n"
                 "class id with --by-clsid after `avihost register`. Errors print the status code, the\n"
                 "module's message and what failed, and exit with status 1."};
    app.require_subcommand(1);
    ModuleOptions module;
    app.add_option("--module", module.modulePath, "path of the module library (default: beside avihost)");
    app.add_flag("--by-clsid", module.byClassId, "create the module's object by class id through the registry");
    app.add_flag("-v,--verbose", module.verbose, "echo the module's log lines to stderr");

    std::string file;
    bool json = false;

    auto* check = app.add_subcommand("check", "does the module take FILE?");
    check->add_option("FILE", file, "AVI file")->required();

    auto* info = app.add_subcommand("info", "module and stream information, headers and index summary");
    info->add_option("FILE", file, "AVI file")->required();
    info->add_flag("--json", json, "JSON output");
    info->footer(kInfoJson);

    std::string output;
    auto* audio = app.add_subcommand("audio", "all audio through the audio reader into a WAV file");
    audio->add_option("FILE", file, "AVI file")->required();
    audio->add_option("-o,--output", output, "WAV file to write")->required();

    RawOptions raw;
    uint64_t rawFrame = 0;
    auto* rawCmd = app.add_subcommand("raw", "DV frames or stored audio chunks as they are in the file");
    rawCmd->add_option("FILE", raw.file, "AVI file with DV video")->required();
    auto* frameOpt = rawCmd->add_option("--frame", rawFrame, "write DV frame N");
    auto* audioOpt = rawCmd->add_flag("--audio", raw.audio, "write stored audio chunks, from the first");
    rawCmd->add_option("--chunks", raw.audioChunks, "number of audio chunks (default 1)")->needs(audioOpt);
    rawCmd->add_option("-o,--output", raw.output, "file to write")->required();
    frameOpt->excludes(audioOpt);

    std::optional<uint32_t> indexStream;
    uint32_t streamNumber = 0;
    auto* index = app.add_subcommand("index", "every index entry: stream, entry, ckid, flags, key frame, position, size");
    index->add_option("FILE", file, "AVI file")->required();
    auto* streamOpt = index->add_option("--stream", streamNumber, "only stream N");
    index->add_flag("--json", json, "JSON output");
    index->footer(kIndexJson);

    uint32_t dvFrame = 0;
    auto* dv = app.add_subcommand("dv", "DV parameters, recording date and time and camera values of a frame");
    dv->add_option("FILE", file, "AVI file with DV video")->required();
    dv->add_option("--frame", dvFrame, "frame number (default 0)");
    dv->add_flag("--json", json, "JSON output");
    dv->footer(kDvJson);

    auto* reg = app.add_subcommand("register", "register the module (DllRegisterServer)");
    auto* unreg = app.add_subcommand("unregister", "unregister the module (DllUnregisterServer)");

    CLI11_PARSE(app, argc, argv);
    try {
        if (*check) return RunCheck(module, file);
        if (*info) return RunInfo(module, file, json);
        if (*audio) return RunAudio(module, file, output);
        if (*rawCmd) {
            if (!*frameOpt && !raw.audio) throw CLI::RequiredError("--frame or --audio");
            if (*frameOpt) raw.frame = rawFrame;
            return RunRaw(module, raw);
        }
        if (*index) {
            if (*streamOpt) indexStream = streamNumber;
            return RunIndex(module, file, indexStream, json);
        }
        if (*dv) return RunDv(module, file, dvFrame, json);
        if (*reg) return RunRegister(module, true);
        if (*unreg) return RunRegister(module, false);
    } catch (const HostError& error) {
        return ReportFailure(error);
    } catch (const CLI::Error& error) {
        return app.exit(error);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "avihost: error %s\n", error.what());
        return 1;
    }
    return 0;
}
