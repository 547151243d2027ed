// Writes a prepared scene into the shared memory file, in the form of ModelStream.h.
#pragma once

#include "import/worker/PreparedScene.h"

namespace lumora
{

/// Throws NoRoom when the file cannot grow as far as needed.
void WriteStream(int descriptor, const PreparedScene& scene);

} // namespace lumora
