#pragma once

#include "Proc/Host/Files/FileFacts.h"
#include "Proc/Host/PictureFile.h"

#include <filesystem>

namespace Velnor::Proc::Files {

/// Throws FileLimitException when the file's packed metadata is over FileFacts::MAX_METADATA_BYTES. Before the library
/// reads the header, which unpacks it.
void RequireLittleMetadata(std::filesystem::path const& path, FileFacts const& facts);

/// Throws the FileLimitException of the first limit that the image is over. No pixel has been decoded yet.
void RequireLimits(std::filesystem::path const& path, VipsImage* image, ReadKind kind, FileFacts const& facts,
                   ReadOptions const& options);

/// The same of what the file library does not read. The facts hold the bits of a pixel; `memory` is what reading takes,
/// the picture included, in bytes.
void RequireLimits(std::filesystem::path const& path, FrameFormat const& frame, std::uint64_t memory, ReadKind kind,
                   FileFacts const& facts, ReadOptions const& options);

/// Bytes that reading the image takes at its height, the picture included. An upper bound for well-behaved files.
std::uint64_t EstimateMemory(VipsImage* image, ReadKind kind, FileFacts const& facts);

} // namespace Velnor::Proc::Files
