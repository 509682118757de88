// The image decoder, with bounds on what a hostile file makes of it.

#include <cstddef>
#include <cstdlib>

namespace {

/// Above what an image of 4096 x 4096 pixels of 16 bits in 4 channels needs at once. Compressed
/// data says nothing of how much comes out of it.
constexpr std::size_t nMostBytes = std::size_t{136} << 20U;

/// Zeros, because the decoder gives out as pixels what a file that is cut off has left unwritten.
void* Allocate(std::size_t nBytes) {
  return nBytes <= nMostBytes ? std::calloc(1, nBytes) : nullptr;
}

void* Reallocate(void* p, std::size_t nBytes) {
  return nBytes <= nMostBytes ? std::realloc(p, nBytes) : nullptr;
}

}  // namespace

#define STBI_MALLOC(nBytes) Allocate(nBytes)
#define STBI_REALLOC(p, nBytes) Reallocate(p, nBytes)
#define STBI_FREE(p) std::free(p)
#define STBI_ONLY_JPEG
#define STBI_ONLY_PNG
#define STBI_ONLY_BMP
#define STBI_ONLY_TGA
#define STBI_ONLY_PNM
#define STBI_NO_STDIO
#define STBI_NO_LINEAR
#define STBI_MAX_DIMENSIONS 4096
#define STBI_FAILURE_USERMSG
#define STB_IMAGE_IMPLEMENTATION
// A cast in front of a macro from here counts as ours.
#pragma GCC diagnostic ignored "-Wold-style-cast"
#include <stb_image.h>
