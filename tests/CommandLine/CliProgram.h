// Runs the built spindrift-cli as a user would, against stub tools or the real disc tools.
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <nlohmann/json.hpp>
#include <vector>

#include "TestFolder.h"

class CliProgram final {
public:
    // Starts the program in the environment that the test folder has set up.
    enum class Group { Shared, Own };  // Own: a process group of its own, as a shell's job has
    explicit CliProgram(const QStringList& arguments, Group group = Group::Shared);
    ~CliProgram();

    // Waits for the end; the exit status, or -1 when a signal ended it or it did not end.
    int exitStatus();
    QByteArray output();
    QByteArray errors();

    // Waits until standard output holds this text; false when the program ends without it.
    bool waitForOutput(const QByteArray& text);
    void sendSignal(int number) const;
    void sendSignalToGroup(int number) const;
    // Stops the program, so that what happens until SIGCONT waits for it.
    bool stop() const;

    // Standard output as one JSON value a line.
    std::vector<nlohmann::ordered_json> jsonLines();
    // "property=value" of each change in the order, without those that depend on the time.
    std::vector<std::string> changes();
    // The last value of one property; null when it was never printed.
    nlohmann::ordered_json lastValue(const std::string& property);

private:
    QProcess m_process;
    QByteArray m_output;
};

namespace CliTest {

// The disc tools of this build in place of the stubs.
void useRealTools(TestFolder& folder);

// Stub drutil and diskutil: a drive with a DVD "TEST DISC" as disk4, imaged from disk4s1.
void writeDrive(const TestFolder& folder);
// A stub hdiutil with this body; "$image" is the file that it is to write.
void writeImagingTool(const TestFolder& folder, const QByteArray& body);

// What is left in the folder for temporary images.
QStringList temporaryImages(const TestFolder& folder);

// Whether a process with this identifier runs.
bool isRunning(qint64 identifier);
// The kernel's letter for what a process does: 'T' stopped, 'Z' ended but not reaped; 0: none.
char stateOf(qint64 identifier);

}  // namespace CliTest
