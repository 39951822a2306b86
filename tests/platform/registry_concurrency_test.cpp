// Several processes changing the registry file at once: every change of every process is kept.
#include <gtest/gtest.h>

#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "platform/win32.h"
#include "tests/platform/registry_sandbox.h"

namespace {

constexpr int kProcesses = 4;
constexpr int kKeysPerProcess = 40;

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
    HKEY key = nullptr;
    if (RegCreateKeyExA(root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr) != ERROR_SUCCESS)
        return 1;
    const LONG err = RegSetValueExA(key, name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), 4);
    RegCloseKey(key);
    return err == ERROR_SUCCESS ? 0 : 1;
}

DWORD GetNumber(HKEY root, const std::string& path, const std::string& name) {
    HKEY key = nullptr;
    DWORD number = 0xFFFFFFFF, size = 4;
    if (RegOpenKeyExA(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return number;
    RegQueryValueExA(key, name.c_str(), nullptr, nullptr, reinterpret_cast<BYTE*>(&number), &size);
    RegCloseKey(key);
    return number;
}

DWORD CountSubKeys(HKEY root, const char* path) {
    HKEY key = nullptr;
    DWORD count = 0;
    if (RegOpenKeyExA(root, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return 0;
    RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                     nullptr);
    RegCloseKey(key);
    return count;
}

TEST(RegistryConcurrencyTest, ProcessesWritingAtOnceLoseNothing) {
    RegistrySandbox sandbox;
    const int failed = RunInChildren(kProcesses, [](int process) {
        int errors = 0;
        for (int i = 0; i < kKeysPerProcess; ++i) {
            const std::string own = "Many\\P" + std::to_string(process) + "\\K" + std::to_string(i);
            errors += SetNumber(HKEY_CURRENT_USER, own, "n", static_cast<DWORD>(process * 1000 + i));
            // Everybody also writes values into one shared key.
            errors += SetNumber(HKEY_CLASSES_ROOT, "Shared", "P" + std::to_string(process) + "_" + std::to_string(i),
                                static_cast<DWORD>(i));
        }
        return errors;
    });
    ASSERT_EQ(0, failed);

    for (int p = 0; p < kProcesses; ++p) {
        const std::string parent = "Many\\P" + std::to_string(p);
        EXPECT_EQ(static_cast<DWORD>(kKeysPerProcess), CountSubKeys(HKEY_CURRENT_USER, parent.c_str()));
        for (int i = 0; i < kKeysPerProcess; ++i) {
            EXPECT_EQ(static_cast<DWORD>(p * 1000 + i),
                      GetNumber(HKEY_CURRENT_USER, parent + "\\K" + std::to_string(i), "n"));
            EXPECT_EQ(static_cast<DWORD>(i),
                      GetNumber(HKEY_CLASSES_ROOT, "Shared", "P" + std::to_string(p) + "_" + std::to_string(i)));
        }
    }
    HKEY shared = nullptr;
    DWORD values = 0;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExA(HKEY_CLASSES_ROOT, "Shared", 0, KEY_READ, &shared));
    RegQueryInfoKeyA(shared, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &values, nullptr, nullptr, nullptr,
                     nullptr);
    RegCloseKey(shared);
    EXPECT_EQ(static_cast<DWORD>(kProcesses * kKeysPerProcess), values);
    // No temporary file is left behind.
    EXPECT_EQ(std::string::npos, sandbox.FileText().find(".tmp"));
}

TEST(RegistryConcurrencyTest, RegisteringAndUnregisteringBesideOtherWritersKeepsTheirKeys) {
    RegistrySandbox sandbox;
    // Process 0 registers and unregisters a class over and over; the others add keys meanwhile.
    const int failed = RunInChildren(3, [](int process) {
        int errors = 0;
        for (int i = 0; i < kKeysPerProcess; ++i) {
            if (process == 0) {
                errors += SetNumber(HKEY_CLASSES_ROOT, "CLSID\\{Churn}\\InprocServer32", "n", static_cast<DWORD>(i));
                if (RegDeleteKeyA(HKEY_CLASSES_ROOT, "CLSID\\{Churn}\\InprocServer32") != ERROR_SUCCESS) ++errors;
                if (RegDeleteKeyA(HKEY_CLASSES_ROOT, "CLSID\\{Churn}") != ERROR_SUCCESS) ++errors;
            } else {
                errors += SetNumber(HKEY_CLASSES_ROOT,
                                    "CLSID\\{Stay" + std::to_string(process) + "-" + std::to_string(i) + "}", "n",
                                    static_cast<DWORD>(i));
            }
        }
        return errors;
    });
    ASSERT_EQ(0, failed);
    EXPECT_EQ(static_cast<DWORD>(2 * kKeysPerProcess), CountSubKeys(HKEY_CLASSES_ROOT, "CLSID"));
    HKEY churn = nullptr;
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegOpenKeyExA(HKEY_CLASSES_ROOT, "CLSID\\{Churn}", 0, KEY_READ, &churn));
}

TEST(RegistryConcurrencyTest, ThreadsOfOneProcessWritingAtOnceLoseNothing) {
    RegistrySandbox sandbox;
    std::vector<std::thread> threads;
    std::vector<int> errors(kProcesses, 0);
    for (int t = 0; t < kProcesses; ++t) {
        threads.emplace_back([t, &errors] {
            for (int i = 0; i < kKeysPerProcess / 2; ++i)
                errors[t] += SetNumber(HKEY_CURRENT_USER, "Threads", "T" + std::to_string(t) + "_" + std::to_string(i),
                                       static_cast<DWORD>(t * 100 + i));
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (int t = 0; t < kProcesses; ++t) {
        EXPECT_EQ(0, errors[t]);
        for (int i = 0; i < kKeysPerProcess / 2; ++i)
            EXPECT_EQ(static_cast<DWORD>(t * 100 + i),
                      GetNumber(HKEY_CURRENT_USER, "Threads", "T" + std::to_string(t) + "_" + std::to_string(i)));
    }
}

}  // namespace
