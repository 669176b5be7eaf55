// What hdiutil is asked.
#include <gmock/gmock.h>

#include "CreateCommand.h"
#include "ToolRun.h"

using testing::HasSubstr;

namespace {

Result<CreateCommand> parse(const std::vector<const char*>& arguments) {
    return CreateCommand::parse(arguments);
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
        const auto command = parse(arguments);
        ASSERT_FALSE(command) << expected;
        EXPECT_EQ(command.failure().kind, Failure::Kind::Usage);
        EXPECT_THAT(command.failure().sentence, HasSubstr(expected));
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

}  // namespace
