// The one place where stb_image is compiled, for all formats but JPEG.
#define STB_IMAGE_IMPLEMENTATION
#define STBI_MAX_DIMENSIONS 8192
#define STBI_NO_JPEG
#define STBI_NO_STDIO
#include <stb/stb_image.h>
