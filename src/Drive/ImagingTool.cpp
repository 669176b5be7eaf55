#include "ImagingTool.h"

#include <QFileInfo>
#include <QTimer>
#include <chrono>
#include <utility>

#include "ChildProcess.h"
#include "MainThreadLink.h"
#include "ProcessTree.h"
#include "ProgressLines.h"
#include "ToolRoot.h"

namespace {

constexpr std::chrono::seconds sampleInterval{1};

}  // namespace

ImagingTool::ImagingTool(const QString& bsdName, const QString& base)
    : m_bsdName(bsdName), m_base(base), m_image(base + QStringLiteral(".cdr")) {}

ImagingTool::~ImagingTool() {
    if (m_link) {
        m_link->cut();
    }
}

std::optional<qint64> ImagingTool::imageSize() const {
    const QFileInfo info(m_image);
    return info.exists() ? std::optional(info.size()) : std::nullopt;
}

std::shared_ptr<ChildProcess> ImagingTool::makeProcess(const QStringList& output) const {
    auto process = std::make_shared<ChildProcess>(
        ToolRoot::resolve(QStringLiteral("/usr/bin/hdiutil")),
        QStringList{QStringLiteral("create"), QStringLiteral("-srcdevice"),
                    QStringLiteral("/dev/") + m_bsdName, QStringLiteral("-format"),
                    QStringLiteral("UDTO")} +
            output);
    process->setStream(ChildProcess::Output::Standard, ChildProcess::Stream::Null);
    process->setStream(ChildProcess::Output::Error, ChildProcess::Stream::Null);
    return process;
}

std::optional<QString> ImagingTool::start(QObject* model, const Handlers& handlers,
                                          ErrorOutput errorOutput) {
    m_link = MainThreadLink::to(model);
    auto process = makeProcess({QStringLiteral("-puppetstrings"), QStringLiteral("-o"), m_image});
    process->setStream(ChildProcess::Output::Standard, ChildProcess::Stream::Pipe);
    process->setChunkHandler(ChildProcess::Output::Standard,
                             [link = m_link, progressed = handlers.progressed,
                              lines = ProgressLines()](const QByteArray& chunk) mutable {
                                 for (const double fraction : lines.append(chunk)) {
                                     link->post([progressed, fraction] { progressed(fraction); });
                                 }
                             });
    const auto errors = std::make_shared<QByteArray>();
    if (errorOutput == ErrorOutput::Collected) {
        process->setStream(ChildProcess::Output::Error, ChildProcess::Stream::Pipe);
        process->setChunkHandler(ChildProcess::Output::Error,
                                 [errors](const QByteArray& chunk) { *errors += chunk; });
    }
    process->setExitHandler([this, link = m_link, ended = handlers.ended, errors](int status) {
        link->post([this, ended, errors, status] {
            m_sampler.reset();
            ended(status, *errors);
        });
    });
    if (auto failure = process->launch()) {
        return failure;
    }
    m_process = std::move(process);
    m_sampler = std::make_unique<QTimer>(model);
    m_sampler->callOnTimeout(handlers.sample);
    m_sampler->start(sampleInterval);
    return std::nullopt;
}

void ImagingTool::terminate() {
    if (m_process) {
        ProcessTree::terminate(*m_process);
    }
}

bool ImagingTool::runSilently(const std::function<void(std::shared_ptr<ChildProcess>)>& track) {
    // Without an extension: the tool adds ".cdr" itself.
    const auto process = makeProcess({QStringLiteral("-o"), m_base});
    if (process->launch()) {
        return false;
    }
    track(process);
    return process->wait() == 0;
}
