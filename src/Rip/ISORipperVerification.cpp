// The rip engine's half that starts, ends and reports the verification.
#include "BackgroundThread.h"
#include "ISORipper.h"
#include "MainThreadLink.h"
#include "ProcessTree.h"
#include "Published.h"
#include "Verification.h"

void ISORipper::startVerification(const QString& bsdName, bool thorough) {
    if (!thorough) {
        publish(this, m_verifyStatus, std::optional(VerifyStatus::matched()),
                &ISORipper::verifyStatusChanged);
        return;
    }
    if (!m_destination) {
        return;
    }
    publish(this, m_isVerifying, true, &ISORipper::isVerifyingChanged);
    publish(this, m_verifyStatus, std::optional<VerifyStatus>(), &ISORipper::verifyStatusChanged);
    m_verifyCancelled = false;
    m_verification = std::make_shared<VerifyProcesses>();

    const Verification::Job job{bsdName, *m_destination, m_temporaryFolder, m_verification};
    const auto handOver = [this, link = m_link](const VerifyStatus& verdict) {
        link->post([this, verdict] { verificationEnded(verdict); });
    };
    const int error =
        BackgroundThread::start(BackgroundThread::Priority::Normal, [link = m_link, job, handOver] {
            if (!link->isCut()) {
                Verification::run(job, handOver);
            }
        });
    if (error != 0) {
        handOver(Verification::notReadAgain());
    }
}

void ISORipper::verificationEnded(const VerifyStatus& verdict) {
    publish(this, m_isVerifying, false, &ISORipper::isVerifyingChanged);
    m_verification->clear();
    if (!m_verifyCancelled) {
        publish(this, m_verifyStatus, std::optional(verdict), &ISORipper::verifyStatusChanged);
    }
}

size_t ISORipper::trackedVerifyProcesses() const {
    return m_verification ? m_verification->copy().size() : 0;
}

void ISORipper::cancelVerification() {
    m_verifyCancelled = true;
    if (!m_verification) {
        return;
    }
    for (const auto& process : m_verification->copy()) {
        ProcessTree::terminate(*process);
    }
}
