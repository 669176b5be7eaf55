// Standard output or standard error, written at once and without a buffer.
//
// Owned by the program's entry, borrowed by the commands; main thread. Remembers the first failure;
// after it, what is written is dropped. SIGPIPE must not end the process (see Interruption).
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

class TextOutput final {
public:
    static constexpr int readerCheckInterval = 500;  // milliseconds, for who asks readerIsGone()

    explicit TextOutput(int descriptor);

    // Whether lines can be drawn over: a terminal that is not a dumb one.
    bool isTerminal() const { return m_isTerminal; }
    // The terminal's width in columns at this moment; 80 when it is not known.
    int columns() const;

    // The bytes as they are.
    void write(const QByteArray& bytes);
    // Lines for people. On a terminal, control characters in them, which may come from a disc's
    // name, a file's or a tool, are replaced by U+FFFD instead of obeyed; line feeds and tabs stay.
    void write(const QString& text);

    // True once nobody reads the other end of the pipe any more.
    bool readerIsGone();
    // Why something could not be written, as the system says it; absent while all was written.
    std::optional<QString> failure() const;

private:
    int m_descriptor;
    bool m_isTerminal;
    bool m_obeysControlCharacters;  // any terminal, also a dumb one
    int m_failure = 0;              // an error number
};
