#pragma once

#include "Proc/Host/PictureFile.h"
#include "Proc/Interfaces/IEffectFactory.h"

#include <filesystem>
#include <string>
#include <vector>

namespace Velnor::Tool {

/// The picture in a format that a file of this name can hold, converted by the factory's converter where it must be.
/// Alpha is kept when the input had it or when an effect made it: one that is opaque everywhere is dropped, being a
/// by-product of an effect's working format.
Proc::DataHandle PrepareForFile(Proc::DataHandle picture, std::filesystem::path const& file, bool inputHadAlpha,
                                Proc::IEffectFactory& factory);

/// Throws Failure (wrong call) when a file of this name has no use for an option.
void RequireOptions(std::filesystem::path const& file, Proc::WriteOptions const& options);

/// Writes the picture, converted as PrepareForFile does, after making the folders that are missing. Returns what the
/// person should know, as WritePicture does. Throws Failure (output) when a folder cannot be made, and what
/// WritePicture throws.
std::vector<std::string> SavePicture(Proc::DataHandle picture, std::filesystem::path const& file, bool inputHadAlpha,
                                     Proc::PictureMetadata const* metadata, Proc::WriteOptions const& options,
                                     Proc::IEffectFactory& factory);

/// Whether the format has alpha other than a palette's, which has a place for opacity whether it is used or not.
bool HasAlpha(PixFmt format);

/// Whether every pixel is opaque. A palette counts by the entries that the pixels use.
bool IsOpaque(Proc::IDataVideo const& picture);

} // namespace Velnor::Tool
