#include "ToolRoot.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include "TestFolder.h"

namespace {

const QString drutil = QStringLiteral("/usr/bin/drutil");

// A tool of this name can be beside no program, unless a test puts it there.
QString unknownTool() {
    return QStringLiteral("/usr/bin/no-such-tool-%1").arg(QCoreApplication::applicationPid());
}

class BesideProgram final {
public:
    explicit BesideProgram(const QString& fixedPath)
        : m_path(QDir::cleanPath(QCoreApplication::applicationDirPath() +
                                 QStringLiteral("/" SPINDRIFT_LIBEXEC_FROM_BIN) + fixedPath)) {
        QDir().mkpath(QFileInfo(m_path).path());
        QFile file(m_path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    }
    ~BesideProgram() { QFile::remove(m_path); }
    const QString& path() const { return m_path; }

private:
    QString m_path;
};

TEST(ToolRootTest, TheChosenRootThatHoldsTheToolProvidesIt) {
    TestFolder folder;
    const QString tool = folder.write(QStringLiteral("tools/usr/bin/drutil"), "");
    EXPECT_EQ(ToolRoot::resolve(drutil), tool);
}

TEST(ToolRootTest, AChosenRootMayEndInASlashOrBeRelative) {
    TestFolder folder;
    const QString tool = folder.write(QStringLiteral("tools/usr/bin/drutil"), "");
    folder.setEnvironment("SPINDRIFT_TOOL_ROOT", folder.toolRoot().toUtf8() + "//");
    EXPECT_EQ(ToolRoot::resolve(drutil), tool);
    folder.setEnvironment("SPINDRIFT_TOOL_ROOT",
                          QDir::current().relativeFilePath(folder.toolRoot()).toUtf8());
    EXPECT_EQ(ToolRoot::resolve(drutil), tool);
}

TEST(ToolRootTest, AToolThatTheChosenRootDoesNotHoldIsLookedForBesideTheProgram) {
    TestFolder folder;
    const BesideProgram tool(unknownTool());
    EXPECT_EQ(ToolRoot::resolve(unknownTool()), tool.path());
}

TEST(ToolRootTest, WithoutAChosenRootTheToolBesideTheProgramIsTaken) {
    TestFolder folder;
    const BesideProgram tool(unknownTool());
    for (const std::optional<QByteArray>& value :
         {std::optional<QByteArray>(), std::optional<QByteArray>("")}) {
        folder.setEnvironment("SPINDRIFT_TOOL_ROOT", value);
        EXPECT_EQ(ToolRoot::resolve(unknownTool()), tool.path());
    }
}

TEST(ToolRootTest, TheChosenRootGoesBeforeTheOneBesideTheProgram) {
    TestFolder folder;
    const BesideProgram beside(unknownTool());
    const QString chosen = folder.write(QStringLiteral("tools") + unknownTool(), "");
    EXPECT_EQ(ToolRoot::resolve(unknownTool()), chosen);
}

TEST(ToolRootTest, AToolThatNoRootHoldsIsItsFixedPath) {
    TestFolder folder;
    EXPECT_EQ(ToolRoot::resolve(unknownTool()), unknownTool());
    folder.setEnvironment("SPINDRIFT_TOOL_ROOT", QByteArray("/nonexistent"));
    EXPECT_EQ(ToolRoot::resolve(unknownTool()), unknownTool());
}

TEST(ToolRootTest, AFolderOfTheToolsNameIsNotTheTool) {
    TestFolder folder;
    QDir().mkpath(folder.toolRoot() + unknownTool());
    EXPECT_EQ(ToolRoot::resolve(unknownTool()), unknownTool());
}

TEST(ToolRootTest, TheRootFolderForcesTheSystemsOwnTools) {
    TestFolder folder;
    const BesideProgram beside(unknownTool());
    for (const char* root : {"/", "//", "/."}) {
        folder.setEnvironment("SPINDRIFT_TOOL_ROOT", QByteArray(root));
        EXPECT_EQ(ToolRoot::resolve(unknownTool()), unknownTool()) << root;
    }
}

}  // namespace
