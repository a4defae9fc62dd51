#include "decodewith.h"

#include <cstring>

#include <dlfcn.h>

#include <magick/api.h>

// Only the library's types come from its headers; it is loaded when it is the one that is measured.
bool decodeByGraphicsMagick(const char *path)
{
    static void *const library = openLibrary("libGraphicsMagick-Q16.so.3");
#define SYMBOL(name) static const auto name##Of = reinterpret_cast<decltype(&(name))>(dlsym(library, #name))
    SYMBOL(InitializeMagick);
    SYMBOL(GetExceptionInfo);
    SYMBOL(DestroyExceptionInfo);
    SYMBOL(CloneImageInfo);
    SYMBOL(DestroyImageInfo);
    SYMBOL(ReadImage);
    SYMBOL(DestroyImageList);
#undef SYMBOL
    static const bool ready = [] {
        InitializeMagickOf(nullptr);
        return true;
    }();
    ExceptionInfo exception;
    GetExceptionInfoOf(&exception);
    ImageInfo *const info = CloneImageInfoOf(nullptr);
    std::strncpy(info->filename, path, sizeof info->filename - 1);
    Image *const image = ReadImageOf(info, &exception);
    if (image)
        DestroyImageListOf(image);
    DestroyImageInfoOf(info);
    DestroyExceptionInfoOf(&exception);
    return ready && image != nullptr;
}
