// What hdiutil is asked and what it prints while it works, apart from the discs.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "CreateCommand.h"
#include "ProgressLines.h"
#include "ToolRun.h"

using testing::HasSubstr;

namespace {

std::optional<CreateCommand> parse(const std::vector<const char*>& arguments,
                                   std::string* problem = nullptr) {
    std::string ignored;
    return CreateCommand::parse(arguments, problem != nullptr ? problem : &ignored);
}

TEST(CreateCommandTest, TheOptionsMayComeInAnyOrder) {
    const auto first =
        parse({"-srcdevice", "/dev/sr0", "-format", "UDTO", "-puppetstrings", "-o", "/a/b.cdr"});
    const auto second =
        parse({"-o", "/a/b", "-puppetstrings", "-format", "UDTO", "-srcdevice", "/dev/sr0"});
    for (const auto& command : {first, second}) {
        ASSERT_TRUE(command);
        EXPECT_EQ(command->device, "/dev/sr0");
        EXPECT_EQ(command->image, "/a/b.cdr");
        EXPECT_TRUE(command->progress);
    }
    EXPECT_FALSE(parse({"-srcdevice", "/dev/sr0", "-format", "UDTO", "-o", "x"})->progress);
}

TEST(CreateCommandTest, WhateverElseIsAskedIsAUsageError) {
    const struct {
        std::vector<const char*> arguments;
        const char* problem;
    } cases[] = {
        {{}, "all needed"},
        {{"-srcdevice", "/dev/sr0", "-format", "UDTO"}, "all needed"},
        {{"-srcdevice", "/dev/sr0", "-o", "x"}, "all needed"},
        {{"-format", "UDTO", "-o", "x"}, "all needed"},
        {{"-srcdevice", "/dev/sr0", "-format", "UDRW", "-o", "x"}, "not UDRW"},
        {{"-srcdevice"}, "-srcdevice needs a value"},
        {{"-o", ""}, "-o needs a value"},
        {{"-o", "x", "-o", "y"}, "-o is given twice"},
        {{"-srcdevice", "/dev/sr0", "-srcdevice", "/dev/sr0"}, "-srcdevice is given twice"},
        {{"-srcdevice", "/dev/sr0", "-format", "UDTO", "-o", "folder/"},
         "-o needs the name of a file, not of the folder folder/"},
        {{"-srcdevice", "/dev/sr0", "-format", "UDTO", "-o", "/"}, "not of the folder /"},
        {{"-srcdevice", "-format", "UDTO", "-o", "x"}, "unknown option UDTO"},
        {{"-verbose"}, "unknown option -verbose"},
        {{"file"}, "unknown option file"},
    };
    for (const auto& [arguments, expected] : cases) {
        std::string problem;
        EXPECT_FALSE(parse(arguments, &problem));
        EXPECT_THAT(problem, HasSubstr(expected));
    }
}

TEST(HdiutilUsageTest, AUsageErrorExitsWithSixtyFourAndPrintsTheUsage) {
    for (const auto& arguments :
         {std::vector<std::string>{}, std::vector<std::string>{"attach"},
          std::vector<std::string>{"create"}, std::vector<std::string>{"create", "-quiet"}}) {
        const auto result = ToolRun::run(ToolRun::tool("hdiutil"), arguments);
        EXPECT_EQ(result.status, 64);
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, HasSubstr("Usage: hdiutil create"));
    }
    const auto help = ToolRun::run(ToolRun::tool("hdiutil"), {"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, HasSubstr("Usage: hdiutil create"));
}

class ProgressLinesTest : public testing::Test {
protected:
    ProgressLinesTest() {
        std::signal(SIGPIPE, SIG_IGN);
        EXPECT_EQ(pipe2(m_pipe.data(), O_CLOEXEC), 0);
    }
    ~ProgressLinesTest() override {
        close(m_pipe[0]);
        close(m_pipe[1]);
    }

    std::string printed() const {
        std::array<char, 4096> text{};
        fcntl(m_pipe[0], F_SETFL, O_NONBLOCK);
        const ssize_t count = read(m_pipe[0], text.data(), text.size());
        return {text.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
    }

    std::array<int, 2> m_pipe{};
};

TEST_F(ProgressLinesTest, NumbersArePercentAndOutAtOnce) {
    ProgressLines lines(m_pipe[1]);
    lines.unknown();
    EXPECT_EQ(printed(), "PERCENT:-1\n");
    lines.done(1, 8);
    EXPECT_EQ(printed(), "PERCENT:12.500000\n");
    lines.done(8, 8);
    EXPECT_EQ(printed(), "PERCENT:100.000000\n");
}

TEST_F(ProgressLinesTest, NoNewsIsNoLine) {
    ProgressLines lines(m_pipe[1]);
    lines.done(1, 2);
    lines.done(1, 2);
    EXPECT_EQ(printed(), "PERCENT:50.000000\n");
}

TEST_F(ProgressLinesTest, ItIsNeverMoreThanAHundredPercent) {
    ProgressLines lines(m_pipe[1]);
    lines.done(3, 2);
    EXPECT_EQ(printed(), "PERCENT:100.000000\n");
    lines.done(0, 0);
    EXPECT_EQ(printed(), "");
}

TEST_F(ProgressLinesTest, AReaderThatGoesAwayIsNoticedWithoutALine) {
    ProgressLines lines(m_pipe[1]);
    EXPECT_FALSE(lines.readerIsGone());
    close(m_pipe[0]);
    EXPECT_TRUE(lines.readerIsGone());
    m_pipe[0] = -1;
}

TEST_F(ProgressLinesTest, AReaderThatGoesAwayIsNoticedByALine) {
    ProgressLines lines(m_pipe[1]);
    close(m_pipe[0]);
    lines.done(1, 2);
    EXPECT_TRUE(lines.readerIsGone());
    m_pipe[0] = -1;
}

TEST_F(ProgressLinesTest, WithoutLinesNobodyIsGone) {
    ProgressLines lines(std::nullopt);
    lines.done(1, 2);
    EXPECT_FALSE(lines.readerIsGone());
}

}  // namespace
