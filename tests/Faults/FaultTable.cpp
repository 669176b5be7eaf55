#include "FaultTable.h"

#include <cctype>

namespace {

constexpr qsizetype discBytes = 1300 * 2048;  // two blocks of the imaging tool

std::string actual(int status, const std::string& says, const std::string& left) {
    return "status: " + std::to_string(status) + "\nsays:   " + says + "\nleft:   " + left;
}

}  // namespace

std::string faultCellName(const testing::TestParamInfo<FaultCell>& info) {
    std::string name;
    bool begins = true;
    const bool replaces = std::string(info.param.words).find("--force") != std::string::npos;
    for (const char letter : std::string(info.param.phase) +
                                 (replaces ? " over an old file " : " ") + info.param.rule + ' ' +
                                 info.param.name) {
        if (std::isalnum(static_cast<unsigned char>(letter)) == 0) {
            name += letter == '+' ? "AndLater" : letter == '>' ? "To" : "";
            begins = true;
            continue;
        }
        name +=
            begins ? static_cast<char>(std::toupper(static_cast<unsigned char>(letter))) : letter;
        begins = false;
    }
    return name;
}

TEST_P(FaultTable, EndsAsTheRowSaysAndTheNextRipWorks) {
    NEEDS_PRELOADING();
    const FaultCell& cell = GetParam();
    FaultWorld world(discBytes);
    const QString words = QString::fromUtf8(cell.words);
    const bool isOther = words.contains(QLatin1String("OTHER"));
    if (isOther && !world.hasOther()) {
        GTEST_SKIP() << "no second writable file system on this machine";
    }
    const QString target = isOther ? QStringLiteral("OTHER") : QStringLiteral("SAME");
    if (words.contains(QLatin1String("--force"))) {
        world.writeOld((isOther ? world.other() : world.same()) + QStringLiteral("/disc.iso"));
    }
    world.writeStores(cell.phase);
    const FaultWorld::Meanwhile meanwhile =
        cell.meanwhile == nullptr ? FaultWorld::Meanwhile()
                                  : [&](CliProgram& program) { cell.meanwhile(world, program); };
    const FaultWorld::Ending ending = world.run(words, cell.rule, meanwhile);
    EXPECT_GT(ending.faults, 0U) << "the call never came";
    EXPECT_EQ(actual(ending.status, ending.says, world.left()),
              actual(cell.status, cell.says, cell.left));
    EXPECT_EQ(world.nextRip(target), "");
}
