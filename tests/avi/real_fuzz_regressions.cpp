// Inputs the parser fuzz target found, replayed through the same parser pass (open, quick check,
// full parse, frames and audio from the start, the middle and past the end). Each file in
// tests/avi/real_fuzz_inputs is named after what it does to the parser; the replay must finish
// without a crash or a sanitizer report (run the suite under `make test-sanitize` to see those).
//
// The two inputs found so far make the DV set-up allocate what a header or index entry claims
// (1.7 and 1.8 GB from a 24 KB file); until those allocations are bounded by the file, each
// replay takes seconds and that much memory.
#include <dirent.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "fuzz/ze_parser_exercise.h"

namespace zetest {
namespace {

const std::string kInputDir = std::string(ZE_SOURCE_DIR) + "/tests/avi/real_fuzz_inputs";

std::vector<std::string> FuzzInputs()
{
    std::vector<std::string> names;
    if (DIR* dir = opendir(kInputDir.c_str())) {
        while (dirent* e = readdir(dir))
            if (e->d_name[0] != '.')
                names.push_back(e->d_name);
        closedir(dir);
    }
    std::sort(names.begin(), names.end());
    return names;
}

class FuzzRegression : public ::testing::TestWithParam<std::string> {};

TEST_P(FuzzRegression, ReplayFinishes)
{
    const std::string path = kInputDir + "/" + GetParam();
    zefuzz::ExerciseParser(path.c_str());
}

TEST(FuzzRegressionInputs, AreThere)
{
    EXPECT_FALSE(FuzzInputs().empty()) << "no inputs found in " << kInputDir;
}

INSTANTIATE_TEST_SUITE_P(Found, FuzzRegression, ::testing::ValuesIn(FuzzInputs()),
                         [](const ::testing::TestParamInfo<std::string>& p) {
                             std::string name = p.param.substr(0, p.param.find('.'));
                             std::replace_if(name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
                             return name;
                         });

}  // namespace
}  // namespace zetest
