#include "TextOutput.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

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
        const ssize_t written = ::write(m_descriptor, bytes.constData() + done,
                                        static_cast<size_t>(bytes.size() - done));
        if (written >= 0) {
            done += written;
        } else if (errno == EAGAIN) {
            // Whoever shares this descriptor has made it non-blocking.
            pollfd ready{m_descriptor, POLLOUT, 0};
            ::poll(&ready, 1, -1);
        } else if (errno != EINTR) {
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
