#ifndef ORV_DASHBOARD_ASSETS_H
#define ORV_DASHBOARD_ASSETS_H

#include <cstddef>

namespace orvdash
{

/// A file of the page, built into the binary (see cmake/EmbedAssets.cmake).
struct Asset
{
    const char* path;
    const char* contentType;
    const unsigned char* data;
    size_t size;
};

extern const Asset ASSETS[];
extern const size_t ASSET_COUNT;

} // namespace orvdash

#endif
