// The program from its arguments to its exit status.
#pragma once

namespace lumora::render
{

/// 0 done; 1 failed, with one sentence on standard error; 2 the arguments were not understood.
int Run(int argc, const char* const* argv);

} // namespace lumora::render
