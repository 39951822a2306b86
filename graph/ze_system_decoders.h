// Makes the system's decoders known to the filter mapper before decoder discovery asks it. Windows
// has them installed; the Linux runtime brings its own and registers them on first use.
#pragma once

void ZeEnsureSystemDecoders();
