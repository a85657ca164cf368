#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Velnor::Proc {

/// The folder of the networks that came with the host: "networks" in its installed folder.
std::filesystem::path GetNetworksFolder();

/// The file that a model's name stands for: a name without a folder is that of an installed network. Throws
/// EffectException when the name is empty, and NetworkMissingException when no file is there, naming the file and the
/// networks that are installed.
std::filesystem::path FindNetwork(std::string const& model);

/// The content of a network's file. Throws EffectException, naming it, when it cannot be read or is empty.
std::vector<unsigned char> ReadNetwork(std::filesystem::path const& file);

} // namespace Velnor::Proc
