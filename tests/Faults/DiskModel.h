// What a power cut would leave of the files that recorded system calls have made.
//
// A name that was made, moved or removed may be known to the disk at once or only when the file or
// its folder is synchronised; the names of one file system get there in their order. Bytes may get
// there at any time, too, but count only once they are synchronised.
#pragma once

#include <QMap>
#include <QString>
#include <optional>
#include <vector>

class DiskModel final {
public:
    // The folders whose names are followed, each with the number of its file system.
    explicit DiskModel(QMap<QString, int> folders) : m_folders(std::move(folders)) {}

    // A file that was there before, safe on the disk, with bytes that are worth keeping.
    void addOld(const QString& path);
    // How many bytes make a new file worth keeping.
    void setWholeSize(qint64 bytes) { m_wholeSize = bytes; }

    void created(const QString& path);
    void written(const QString& path, qint64 bytes);
    void moved(const QString& from, const QString& to);
    void linked(const QString& from, const QString& to);
    void removed(const QString& path);
    void synchronised(const QString& path);  // a file or a folder

    // What is safe in the worst case; hidden names count for nothing.
    int safeFiles() const;       // old or new
    bool isNewFileSafe() const;  // under any name
    bool isNewFileSafeAt(const QString& path) const;

private:
    struct File {
        bool isOld = false;
        qint64 bytes = 0;
        bool isSynchronised = false;
    };
    struct Change {
        std::optional<QString> gone;
        std::optional<QString> come;
        int file;
    };
    using Names = QMap<QString, int>;

    std::optional<int> fileSystemOf(const QString& path) const;
    void change(const Change& change);
    bool isGood(int file) const;
    bool isNew(int file) const;
    // Every state of one file system's names that a power cut could leave.
    std::vector<Names> statesOf(int fileSystem) const;
    std::vector<int> fileSystems() const;

    QMap<QString, int> m_folders;
    qint64 m_wholeSize = 0;
    std::vector<File> m_files;
    Names m_names;                             // as running programs see them
    QMap<int, Names> m_known;                  // to the disk, by file system
    QMap<int, std::vector<Change>> m_pending;  // by file system
};
