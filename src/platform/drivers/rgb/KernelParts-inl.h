// All kernels, over whichever lanes were included before. Included inside a namespace, once.
// The order matters.
// clang-format off
#include "platform/drivers/rgb/LaneMath-inl.h"
#include "platform/drivers/rgb/Vertices-inl.h"
#include "platform/drivers/rgb/Culling-inl.h"
#include "platform/drivers/rgb/Shading-inl.h"
#include "platform/drivers/rgb/Triangles-inl.h"
#include "platform/drivers/rgb/Planes-inl.h"
#include "platform/drivers/rgb/Fragments-inl.h"
#include "platform/drivers/rgb/TriangleRuns-inl.h"
#include "platform/drivers/rgb/Lines-inl.h"
#include "platform/drivers/rgb/KernelTable-inl.h"
// clang-format on
