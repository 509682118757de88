// The image decoder, with bounds on what a hostile file makes of it.

#include <cstddef>
#include <cstdlib>

#include "platform/d3dx8/image_decoder.h"

namespace quillorbit::d3dx8 {
namespace {

thread_local std::size_t nMost = 0;

/// Zeros, because the decoder gives out as pixels what a file that is cut off has left unwritten.
void* Allocate(std::size_t nBytes) { return nBytes <= nMost ? std::calloc(1, nBytes) : nullptr; }

void* Reallocate(void* p, std::size_t nBytes) {
  return nBytes <= nMost ? std::realloc(p, nBytes) : nullptr;
}

}  // namespace

void LimitDecoder(std::size_t nMostBytes) { nMost = nMostBytes; }

}  // namespace quillorbit::d3dx8

using quillorbit::d3dx8::Allocate;
using quillorbit::d3dx8::Reallocate;
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
#define STBI_FAILURE_USERMSG
#define STB_IMAGE_IMPLEMENTATION
// A cast in front of a macro from here counts as ours.
#pragma GCC diagnostic ignored "-Wold-style-cast"
#include <stb_image.h>
