#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "FuzzTarget.h"

namespace {

std::vector<std::filesystem::path> entriesOf(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> entries;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        entries.push_back(entry.path());
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class CorpusTest : public testing::TestWithParam<FuzzTarget> {
protected:
    // What ends the program must be known by its name then.
    template <typename Read>
    static void forEachFile(const Read& read) {
        const auto files = entriesOf(std::filesystem::path(SPINDRIFT_CORPUS) / GetParam().name);
        ASSERT_FALSE(files.empty()) << "a corpus has files";
        for (const auto& file : files) {
            std::cout << file.filename().string() << std::endl;
            read(contentOf(file));
        }
    }
};

TEST_P(CorpusTest, EveryFileIsReadAsItMustBe) {
    forEachFile([](const std::string& content) { GetParam().run(content); });
}

TEST_P(CorpusTest, EveryFileThatIsCutSomewhereIsReadAsItMustBe) {
    constexpr std::size_t mostCuts = 500;
    forEachFile([](const std::string& content) {
        const std::size_t step = content.size() / mostCuts + 1;
        for (std::size_t length = 0; length < content.size(); length += step) {
            GetParam().run(std::string_view(content).substr(0, length));
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Of, CorpusTest, testing::ValuesIn(FuzzTarget::all()),
                         [](const auto& target) { return std::string(target.param.name); });

TEST(CorporaTest, EveryCorpusIsThatOfATarget) {
    std::vector<std::string> names;
    for (const auto& folder : entriesOf(SPINDRIFT_CORPUS)) {
        names.push_back(folder.filename().string());
    }
    std::vector<std::string> targets;
    for (const FuzzTarget& target : FuzzTarget::all()) {
        targets.emplace_back(target.name);
    }
    EXPECT_THAT(names, testing::UnorderedElementsAreArray(targets));
}

}  // namespace
