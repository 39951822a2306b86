// The registry's file: what is written and read back, where it lives, damaged content, and several
// processes and threads changing it at once without losing a change.
#include <gtest/gtest.h>

#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "tests/support/registry_sandbox.h"

namespace {

using zetest::QueryValue;
using Bytes = std::vector<BYTE>;

void Write(HKEY root, const char* path, const char* name, DWORD type, const void* data, DWORD size) {
    ASSERT_EQ(ERROR_SUCCESS, zetest::WriteValue(root, path, name, type, data, size));
}

class RegistryFileTest : public ::testing::Test {
protected:
    zetest::RegistrySandbox sandbox;
};

TEST_F(RegistryFileTest, WritesReadableRegedit4Text) {
    Write(HKEY_CLASSES_ROOT, "CLSID\\{1}\\InprocServer32", nullptr, REG_SZ, "/lib/x.so", 10);
    Write(HKEY_CLASSES_ROOT, "CLSID\\{1}\\InprocServer32", "ThreadingModel", REG_SZ, "Both", 5);
    const DWORD number = 42;
    Write(HKEY_CURRENT_USER, "Ze", "Count", REG_DWORD, &number, 4);
    const BYTE blob[] = {1, 0xAB};
    Write(HKEY_CURRENT_USER, "Ze", "Blob", REG_BINARY, blob, 2);
    Write(HKEY_CURRENT_USER, "Ze", "Quote", REG_SZ, "say \"hi\"\\", 10);
    // Two bytes of a longer string: stored without a zero, so it has to be kept byte for byte.
    Write(HKEY_CURRENT_USER, "Ze", "Short", REG_SZ, "ORVEN", 2);

    const std::string text = sandbox.FileText();
    EXPECT_EQ(0u, text.find("REGEDIT4\n"));
    EXPECT_NE(std::string::npos, text.find("[HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\CLSID\\{1}\\InprocServer32]\n"
                                           "@=\"/lib/x.so\"\n\"ThreadingModel\"=\"Both\"\n"));
    EXPECT_NE(std::string::npos, text.find("[HKEY_CURRENT_USER\\Ze]\n\"Count\"=dword:0000002a\n\"Blob\"=hex:01,ab\n"
                                           "\"Quote\"=\"say \\\"hi\\\"\\\\\"\n\"Short\"=hex(1):4f,52\n"));
    DWORD type = 0;
    EXPECT_EQ((Bytes{'O', 'R'}), QueryValue(HKEY_CURRENT_USER, "Ze", "Short", &type));
    EXPECT_EQ(REG_SZ, type);
    const Bytes quote = QueryValue(HKEY_CURRENT_USER, "Ze", "Quote");
    EXPECT_EQ(std::string("say \"hi\"\\", 10), std::string(quote.begin(), quote.end()));
}

TEST_F(RegistryFileTest, ReadsHandWrittenFilesAndSkipsDamagedLines) {
    sandbox.WriteFileText(
        "Windows Registry Editor Version 5.00\r\n\r\n; a comment\r\n"
        "[HKEY_CLASSES_ROOT\\CLSID\\{2}]\r\n@=\"two\"\r\n\"Data\"=hex:00,01,02,\\\r\n  03,04\r\n"
        "\"Wide\"=hex(2):41,00,00,00\r\n\"Broken\"=dword:xyz\r\nthis line is noise\r\n"
        "[HKEY_NOWHERE\\Lost]\r\n\"Ignored\"=\"yes\"\r\n[HKEY_CURRENT_USER\\Kept]\r\n\"N\"=DWORD:00000007\r\n");
    DWORD type = 0;
    EXPECT_EQ((Bytes{'t', 'w', 'o', 0}), QueryValue(HKEY_LOCAL_MACHINE, "Software\\Classes\\CLSID\\{2}", nullptr));
    EXPECT_EQ((Bytes{0, 1, 2, 3, 4}), QueryValue(HKEY_CLASSES_ROOT, "CLSID\\{2}", "Data", &type));
    EXPECT_EQ(REG_BINARY, type);
    EXPECT_EQ((Bytes{0x41, 0, 0, 0}), QueryValue(HKEY_CLASSES_ROOT, "CLSID\\{2}", "Wide", &type));
    EXPECT_EQ(REG_EXPAND_SZ, type);
    EXPECT_TRUE(QueryValue(HKEY_CLASSES_ROOT, "CLSID\\{2}", "Broken").empty());
    EXPECT_EQ((Bytes{7, 0, 0, 0}), QueryValue(HKEY_CURRENT_USER, "Kept", "N", &type));
    EXPECT_EQ(REG_DWORD, type);
}

TEST_F(RegistryFileTest, GarbageInTheFileIsNoObstacle) {
    // Bytes of every value, long lines, stray brackets and quotes: nothing parses, nothing breaks.
    std::string garbage = "REGEDIT4\n[HKEY_CURRENT_USER\\Good]\n\"v\"=dword:00000001\n";
    uint32_t state = 12345;
    for (int i = 0; i < 20000; ++i) {
        state = state * 1103515245u + 12345u;
        garbage.push_back(static_cast<char>(state >> 16));
    }
    garbage +=
        "\n[HKEY_CURRENT_USER\\\\Empty\\\\Parts]\n\"unterminated=\"x\n@=hex:zz\n\"a\"=hex(zz):00\n[HKEY_CURRENT_USER\n";
    sandbox.WriteFileText(garbage);

    EXPECT_EQ((Bytes{1, 0, 0, 0}), QueryValue(HKEY_CURRENT_USER, "Good", "v"));
    EXPECT_FALSE(zetest::KeyExists(HKEY_CURRENT_USER, "Empty"));
    // The next change writes a clean file that keeps what could be read.
    Write(HKEY_CURRENT_USER, "Good", "w", REG_SZ, "ok", 3);
    EXPECT_EQ((Bytes{1, 0, 0, 0}), QueryValue(HKEY_CURRENT_USER, "Good", "v"));
    const std::string text = sandbox.FileText();
    EXPECT_EQ(0u, text.find("REGEDIT4\n"));
    EXPECT_LT(text.size(), 200u);  // the garbage is gone
}

TEST_F(RegistryFileTest, EverythingSurvivesARewriteOfTheFile) {
    Write(HKEY_CURRENT_USER, "A\\B", "s", REG_SZ, "text", 5);
    const BYTE all[] = {0, 0x0A, 0x0D, '"', '\\', 0xFF};
    Write(HKEY_CURRENT_USER, "A\\B", "odd", REG_SZ, all, sizeof all);  // a string no quote can carry
    Write(HKEY_CURRENT_USER, "A\\Empty", "e", REG_BINARY, nullptr, 0);
    Write(HKEY_CURRENT_USER, "A\\B", "q", REG_QWORD, "12345678", 8);
    const std::string first = sandbox.FileText();

    // Reading back and writing again (any change makes a full rewrite) reproduces the same text.
    zetest::Key key;
    ASSERT_EQ(ERROR_SUCCESS, zetest::CreateKey(HKEY_CURRENT_USER, "A\\Z", key));
    ASSERT_EQ(ERROR_SUCCESS, RegDeleteKeyA(HKEY_CURRENT_USER, "A\\Z"));
    EXPECT_EQ(first, sandbox.FileText());

    DWORD type = 0;
    EXPECT_EQ(Bytes(all, all + sizeof all), QueryValue(HKEY_CURRENT_USER, "A\\B", "odd", &type));
    EXPECT_EQ(REG_SZ, type);
    EXPECT_TRUE(QueryValue(HKEY_CURRENT_USER, "A\\Empty", "e", &type).empty());
    EXPECT_EQ(REG_BINARY, type);
    EXPECT_EQ(8u, QueryValue(HKEY_CURRENT_USER, "A\\B", "q", &type).size());
    EXPECT_EQ(REG_QWORD, type);
}

TEST_F(RegistryFileTest, StoreLocationFollowsTheEnvironment) {
    Write(HKEY_CURRENT_USER, "Here", "v", REG_SZ, "1", 2);
    EXPECT_NE(std::string::npos, sandbox.FileText().find("[HKEY_CURRENT_USER\\Here]"));

    // Without ZE_REGISTRY_FILE the store is under XDG_DATA_HOME, in a folder made on demand.
    const std::string dataHome = sandbox.Folder() + "/xdg";
    const char* oldXdg = std::getenv("XDG_DATA_HOME");
    const std::string keepXdg = oldXdg ? oldXdg : "";
    ::unsetenv("ZE_REGISTRY_FILE");
    ::setenv("XDG_DATA_HOME", dataHome.c_str(), 1);
    Write(HKEY_CURRENT_USER, "There", "v", REG_SZ, "2", 2);
    EXPECT_FALSE(zetest::KeyExists(HKEY_CURRENT_USER, "Here"));
    if (oldXdg)
        ::setenv("XDG_DATA_HOME", keepXdg.c_str(), 1);
    else
        ::unsetenv("XDG_DATA_HOME");
    ::setenv("ZE_REGISTRY_FILE", sandbox.Path().c_str(), 1);

    EXPECT_EQ(0u, zetest::FileText(dataHome + "/zeavireader/registry.reg").find("REGEDIT4\n"));
    EXPECT_TRUE(zetest::KeyExists(HKEY_CURRENT_USER, "Here"));
}

// ---- several writers at once ----

constexpr int kWriters = 4;
constexpr int kKeysPerWriter = 40;

// Runs `work` in `count` child processes at once; returns how many of them failed.
template <typename Work>
int RunInChildren(int count, Work work) {
    std::vector<pid_t> children;
    for (int i = 0; i < count; ++i) {
        pid_t pid = ::fork();
        if (pid == 0) ::_exit(work(i));
        if (pid > 0) children.push_back(pid);
    }
    int failed = count - static_cast<int>(children.size());
    for (pid_t pid : children) {
        int status = 0;
        if (::waitpid(pid, &status, 0) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0) ++failed;
    }
    return failed;
}

int SetNumber(HKEY root, const std::string& path, const std::string& name, DWORD number) {
    return zetest::WriteNumber(root, path, name, number) == ERROR_SUCCESS ? 0 : 1;
}

std::string Name(const char* prefix, int a, int b) { return prefix + std::to_string(a) + "_" + std::to_string(b); }

TEST_F(RegistryFileTest, ProcessesWritingAtOnceLoseNothing) {
    const int failed = RunInChildren(kWriters, [](int process) {
        int errors = 0;
        for (int i = 0; i < kKeysPerWriter; ++i) {
            errors += SetNumber(HKEY_CURRENT_USER, "Many\\" + Name("P", process, i), "n",
                                static_cast<DWORD>(process * 1000 + i));
            // Everybody also writes values into one shared key.
            errors += SetNumber(HKEY_CLASSES_ROOT, "Shared", Name("P", process, i), static_cast<DWORD>(i));
        }
        return errors;
    });
    ASSERT_EQ(0, failed);
    DWORD subKeys = 0, values = 0;
    zetest::CountEntries(HKEY_CURRENT_USER, "Many", &subKeys, &values);
    EXPECT_EQ(static_cast<DWORD>(kWriters * kKeysPerWriter), subKeys);
    for (int p = 0; p < kWriters; ++p) {
        for (int i = 0; i < kKeysPerWriter; ++i) {
            EXPECT_EQ(static_cast<DWORD>(p * 1000 + i), zetest::QueryNumber(HKEY_CURRENT_USER, "Many\\" + Name("P", p, i), "n"));
            EXPECT_EQ(static_cast<DWORD>(i), zetest::QueryNumber(HKEY_CLASSES_ROOT, "Shared", Name("P", p, i)));
        }
    }
    zetest::CountEntries(HKEY_CLASSES_ROOT, "Shared", &subKeys, &values);
    EXPECT_EQ(static_cast<DWORD>(kWriters * kKeysPerWriter), values);
    EXPECT_EQ(std::string::npos, sandbox.FileText().find(".tmp"));  // no temporary file is left behind
}

TEST_F(RegistryFileTest, RegisteringAndUnregisteringBesideOtherWritersKeepsTheirKeys) {
    // Process 0 registers and unregisters a class over and over; the others add keys meanwhile.
    const int failed = RunInChildren(3, [](int process) {
        int errors = 0;
        for (int i = 0; i < kKeysPerWriter; ++i) {
            if (process == 0) {
                errors += SetNumber(HKEY_CLASSES_ROOT, "CLSID\\{Churn}\\InprocServer32", "n", static_cast<DWORD>(i));
                if (RegDeleteKeyA(HKEY_CLASSES_ROOT, "CLSID\\{Churn}\\InprocServer32") != ERROR_SUCCESS) ++errors;
                if (RegDeleteKeyA(HKEY_CLASSES_ROOT, "CLSID\\{Churn}") != ERROR_SUCCESS) ++errors;
            } else {
                errors += SetNumber(HKEY_CLASSES_ROOT, "CLSID\\" + Name("{Stay", process, i) + "}", "n",
                                    static_cast<DWORD>(i));
            }
        }
        return errors;
    });
    ASSERT_EQ(0, failed);
    DWORD subKeys = 0, values = 0;
    zetest::CountEntries(HKEY_CLASSES_ROOT, "CLSID", &subKeys, &values);
    EXPECT_EQ(static_cast<DWORD>(2 * kKeysPerWriter), subKeys);
    EXPECT_FALSE(zetest::KeyExists(HKEY_CLASSES_ROOT, "CLSID\\{Churn}"));
}

TEST_F(RegistryFileTest, ThreadsOfOneProcessWritingAtOnceLoseNothing) {
    std::vector<std::thread> threads;
    std::vector<int> errors(kWriters, 0);
    for (int t = 0; t < kWriters; ++t) {
        threads.emplace_back([t, &errors] {
            for (int i = 0; i < kKeysPerWriter / 2; ++i)
                errors[t] += SetNumber(HKEY_CURRENT_USER, "Threads", Name("T", t, i), static_cast<DWORD>(t * 100 + i));
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (int t = 0; t < kWriters; ++t) {
        EXPECT_EQ(0, errors[t]);
        for (int i = 0; i < kKeysPerWriter / 2; ++i)
            EXPECT_EQ(static_cast<DWORD>(t * 100 + i), zetest::QueryNumber(HKEY_CURRENT_USER, "Threads", Name("T", t, i)));
    }
}

}  // namespace
