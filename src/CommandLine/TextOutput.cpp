#include "TextOutput.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "Interruption.h"

namespace {

constexpr int patience = 200;  // milliseconds

// Waits until the descriptor takes some output; false when the user has had enough before that.
bool waitUntilItTakesMore(int descriptor) {
    pollfd ready{descriptor, POLLOUT, 0};
    while (::poll(&ready, 1, patience) <= 0) {
        if (Interruption::happened()) {
            return false;
        }
    }
    return true;
}

}  // namespace

TextOutput::TextOutput(int descriptor)
    : m_descriptor(descriptor),
      m_isTerminal(::isatty(descriptor) == 1 && !qEnvironmentVariableIsEmpty("TERM") &&
                   qgetenv("TERM") != "dumb"),
      m_obeysControlCharacters(::isatty(descriptor) == 1) {}

int TextOutput::columns() const {
    winsize size{};
    if (::ioctl(m_descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        return size.ws_col;
    }
    return 80;
}

void TextOutput::write(const QByteArray& bytes) {
    qsizetype done = 0;
    while (done < bytes.size() && m_failure == 0) {
        // A reader that has stopped reading must not stop a cancellation, too.
        if (!waitUntilItTakesMore(m_descriptor)) {
            m_failure = EINTR;
            return;
        }
        const ssize_t written =
            ::write(m_descriptor, bytes.constData() + done,
                    static_cast<size_t>(std::min<qsizetype>(bytes.size() - done, PIPE_BUF)));
        if (written >= 0) {
            done += written;
        } else if (errno != EAGAIN && errno != EINTR) {
            m_failure = errno;
        }
    }
}

void TextOutput::write(const QString& text) {
    QString shown = text;
    if (m_obeysControlCharacters) {
        for (QChar& character : shown) {
            if (character.category() == QChar::Other_Control && character != QLatin1Char('\n') &&
                character != QLatin1Char('\t')) {
                character = QChar::ReplacementCharacter;
            }
        }
    }
    write(shown.toUtf8());
}

bool TextOutput::readerIsGone() {
    if (m_failure == 0) {
        pollfd state{m_descriptor, 0, 0};
        if (::poll(&state, 1, 0) == 1 && (state.revents & POLLERR) != 0 && !m_isTerminal) {
            m_failure = EPIPE;
        }
    }
    return m_failure == EPIPE;
}

std::optional<QString> TextOutput::failure() const {
    return m_failure == 0 ? std::nullopt : std::optional(qt_error_string(m_failure));
}
