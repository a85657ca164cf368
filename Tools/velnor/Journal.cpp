#include "Tools/velnor/Journal.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <system_error>
#include <utility>

namespace Velnor::Tool {
namespace {

namespace fs = std::filesystem;

/// FNV-1a of 64 bits, which does not change from one version to the next.
std::uint64_t Hash(std::string_view text, std::uint64_t hash = 0xcbf29ce484222325) {
    for (char const c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    return hash;
}

struct FileState {
    std::uint64_t size = 0;
    std::int64_t time = 0; ///< Nanoseconds.
    std::uint64_t inode = 0;
    bool isThere = false;
};

FileState LookAt(fs::path const& file) {
    constexpr std::int64_t SECOND = 1'000'000'000;
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) return {};
    return {static_cast<std::uint64_t>(status.st_size), status.st_mtim.tv_sec * SECOND + status.st_mtim.tv_nsec,
            status.st_ino, true};
}

std::string Print(Json const& value) { return value.dump(-1, ' ', false, Json::error_handler_t::replace); }

/// The same for lines that are equal in the members; none for a line that lacks one.
std::optional<std::uint64_t> HashMembers(Json const& line, std::initializer_list<char const*> members) {
    std::string text;
    for (char const* const name : members) {
        if (!line.contains(name)) return std::nullopt;
        text += Print(line[name]) + '\n';
    }
    return Hash(text);
}

/// Which photograph in which state went through what.
std::optional<std::uint64_t> GetKeyOfDone(Json const& line) {
    auto const code = line.find("code");
    bool const isDone = code == line.end() || *code == static_cast<int>(ExitCode::Done);
    return isDone ? HashMembers(line, {"input", "size", "time", "chain"}) : std::nullopt;
}

/// Which photograph went through what: its state has changed with its output where that takes its place.
std::optional<std::uint64_t> GetKeyOfBegun(Json const& line) { return HashMembers(line, {"input", "chain"}); }

Json DescribeState(fs::path const& file) {
    FileState const state = LookAt(file);
    return state.isThere ? Json{{"inode", state.inode}, {"time", state.time}} : Json();
}

/// The outputs in a line, none when there is anything else in it.
std::vector<fs::path> GetOutputs(Json const& line) {
    std::vector<fs::path> outputs;
    if (!line.contains("outputs") || !line["outputs"].is_array()) return outputs;
    for (Json const& output : line["outputs"])
        if (output.is_string()) outputs.emplace_back(output.get<std::string>());
    return outputs;
}

/// Whether the file is one of the others, however they are written.
bool IsAmong(fs::path const& file, std::vector<fs::path> const& files) {
    return std::ranges::any_of(files, [&](fs::path const& other) {
        std::error_code ignored;
        return fs::equivalent(file, other, ignored);
    });
}

Json ListNames(std::vector<fs::path> const& files) {
    Json list = Json::array();
    for (fs::path const& file : files) list.push_back(file.string());
    return list;
}

} // namespace

Journal::Journal(fs::path const& path, std::string chainHash, JournalFile::Use use)
    : begunPath(path.string() + ".begun"),
      chain(std::move(chainHash)),
      isWritable(use == JournalFile::Use::Write),
      done(path, use, GetKeyOfDone),
      begun(begunPath, use, GetKeyOfBegun) {}

Json Journal::Describe(OutputPlan const& plan) const {
    std::vector<std::string> texts{chain};
    for (std::size_t i = 1; i < plan.inputs.size(); ++i) texts.push_back(DescribeFile(plan.inputs[i]));
    FileState const state = LookAt(plan.inputs.front());
    return {{"input", plan.inputs.front().string()},
            {"size", state.size},
            {"time", state.time},
            {"chain", plan.inputs.size() == 1 ? chain : HashTexts(texts)}};
}

bool Journal::IsDone(OutputPlan const& plan, Json const& photo) const {
    std::optional<Json> const line = done.Find(*GetKeyOfDone(photo));
    if (!line) return false;
    std::vector<fs::path> outputs = GetOutputs(*line);
    // The plan has the name as it is, the line may have lost bytes that are no UTF-8.
    if (outputs.size() == 1) {
        if (Print(plan.output.string()) != Print(outputs.front().string())) return false;
        outputs = {plan.output};
    }
    return std::ranges::all_of(outputs, [](fs::path const& file) { return LookAt(file).isThere; });
}

void Journal::RecallBegun(OutputPlan const& plan, Past& past) const {
    std::optional<Json> const line = begun.Find(*GetKeyOfBegun(past.photo));
    if (!line || !line->contains("were")) return;
    std::vector<fs::path> const outputs = GetOutputs(*line);
    bool const isSame = (*line)["size"] == past.photo["size"] && (*line)["time"] == past.photo["time"];
    if (!isSame && !IsAmong(plan.inputs.front(), outputs)) return;
    for (std::size_t i = 0; i < outputs.size() && i < (*line)["were"].size(); ++i) {
        Json const now = DescribeState(outputs[i]);
        if (!now.is_null() && now != (*line)["were"][i]) past.ours.push_back(outputs[i]);
    }
    past.isDone = !outputs.empty() && past.ours.size() == outputs.size();
}

Journal::Past Journal::Recall(OutputPlan const& plan) {
    Past past{Describe(plan), false, {}, {}};
    past.isDone = IsDone(plan, past.photo);
    past.reason = "the journal has it as done";
    if (past.isDone) return past;
    RecallBegun(plan, past);
    past.reason = "it was written before the last run was stopped";
    if (past.isDone && isWritable) NoteEnd(plan, past, past.ours, ExitCode::Done);
    return past;
}

void Journal::NoteBegin(Past const& past, std::vector<fs::path> const& outputs) {
    Json line = past.photo;
    line["outputs"] = ListNames(outputs);
    line["were"] = Json::array();
    for (fs::path const& output : outputs) line["were"].push_back(DescribeState(output));
    begun.Append(line);
}

void Journal::NoteEnd(OutputPlan const& plan, Past const& past, std::vector<fs::path> const& outputs, ExitCode code) {
    // One that its own output has replaced is another by now.
    Json line = IsAmong(plan.inputs.front(), outputs) ? Describe(plan) : past.photo;
    line["outputs"] = ListNames(outputs);
    line["code"] = static_cast<int>(code);
    done.Append(line);
}

void Journal::End() {
    begun.Clear();
    std::error_code ignored;
    fs::remove(begunPath, ignored);
}

std::string HashTexts(std::vector<std::string> const& texts) {
    std::uint64_t hash = Hash("");
    for (std::string const& text : texts) hash = Hash(std::string_view("\0", 1), Hash(text, hash));
    char digits[17] = {};
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash));
    return digits;
}

std::string DescribeFile(fs::path const& file) {
    FileState const state = LookAt(file);
    return file.string() + "\n" + std::to_string(state.size) + "\n" + std::to_string(state.time);
}

} // namespace Velnor::Tool
