#pragma once

#include "Tests/Tools/RunCommand.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <fstream>

namespace Velnor::Tool::Testing {

/// The command at work in an empty folder, with the sample photographs at hand.
class ScratchCommand : public testing::Test {
protected:
    using Json = nlohmann::json;
    using Words = std::vector<std::string>;

    ScratchCommand() : folder(MakeScratchFolder()) {}
    ~ScratchCommand() override { std::filesystem::remove_all(folder); }

    static std::string Sample(std::string const& name) { return std::string(VELNOR_SOURCE_DIR "/Samples/") + name; }
    CommandResult Run(Words const& arguments) const { return RunCommand(arguments, folder); }

    /// What a call that succeeds prints.
    std::string Out(Words const& arguments) const {
        CommandResult const result = Run(arguments);
        EXPECT_EQ(result.code, 0) << testing::PrintToString(arguments) << "\n" << result.error;
        return result.out;
    }
    void ExpectFailure(int code, std::string const& text, Words const& arguments) const {
        CommandResult const result = Run(arguments);
        EXPECT_EQ(result.code, code) << testing::PrintToString(arguments);
        EXPECT_THAT(result.error, testing::HasSubstr(text));
    }
    void MakeText(std::string const& name, std::string const& text) const { std::ofstream(folder / name) << text; }

    std::filesystem::path const folder;
};

} // namespace Velnor::Tool::Testing
