// `register` and `unregister`: the module's self-registration.
#include <cstdio>

#include "host/commands.h"

int RunRegister(const ModuleOptions& module, bool registerServer) {
    const HRESULT hr = RunRegistration(module, registerServer);
    const char* action = registerServer ? "registering" : "unregistering";
    if (FAILED(hr)) throw HostError(hr, std::string(action) + " the module");
    // Unregistering answers S_FALSE when a shared key stays because other filters still use it.
    std::printf("%s the module: %s\n", action, hr == S_OK ? "done" : "done (shared keys kept)");
    return 0;
}
