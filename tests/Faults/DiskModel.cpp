#include "DiskModel.h"

#include <QFileInfo>
#include <algorithm>

namespace {

void apply(QMap<QString, int>& names, const std::optional<QString>& gone,
           const std::optional<QString>& come, int file) {
    if (gone) {
        names.remove(*gone);
    }
    if (come) {
        names[*come] = file;
    }
}

bool isHidden(const QString& path) {
    return QFileInfo(path).fileName().startsWith(QLatin1Char('.'));
}

}  // namespace

std::optional<int> DiskModel::fileSystemOf(const QString& path) const {
    const auto found = m_folders.constFind(QFileInfo(path).path());
    return found == m_folders.cend() ? std::nullopt : std::optional(*found);
}

std::vector<int> DiskModel::fileSystems() const {
    QList<int> all = m_folders.values();
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    return {all.begin(), all.end()};
}

void DiskModel::addOld(const QString& path) {
    m_files.push_back({true, 0, true});
    const int file = static_cast<int>(m_files.size()) - 1;
    m_names[path] = file;
    m_known[*fileSystemOf(path)][path] = file;
}

void DiskModel::change(const Change& change) {
    apply(m_names, change.gone, change.come, change.file);
    const QString path = change.come ? *change.come : *change.gone;
    if (const auto fileSystem = fileSystemOf(path)) {
        m_pending[*fileSystem].push_back(change);
    }
}

void DiskModel::created(const QString& path) {
    if (!m_names.contains(path) && fileSystemOf(path)) {
        m_files.push_back({});
        change({std::nullopt, path, static_cast<int>(m_files.size()) - 1});
    }
}

void DiskModel::written(const QString& path, qint64 bytes) {
    if (m_names.contains(path)) {
        File& file = m_files[static_cast<std::size_t>(m_names[path])];
        file.bytes += bytes;
        file.isSynchronised = false;
    }
}

void DiskModel::moved(const QString& from, const QString& to) {
    if (m_names.contains(from)) {
        change({from, to, m_names[from]});
    }
}

void DiskModel::linked(const QString& from, const QString& to) {
    if (m_names.contains(from)) {
        change({std::nullopt, to, m_names[from]});
    }
}

void DiskModel::removed(const QString& path) {
    if (m_names.contains(path)) {
        change({path, std::nullopt, m_names[path]});
    }
}

void DiskModel::synchronised(const QString& path) {
    const bool isFolder = m_folders.contains(path);
    const auto fileSystem = isFolder ? std::optional(m_folders[path]) : fileSystemOf(path);
    if (!fileSystem || (!isFolder && !m_names.contains(path))) {
        return;
    }
    const int file = isFolder ? -1 : m_names[path];
    if (!isFolder) {
        m_files[static_cast<std::size_t>(file)].isSynchronised = true;
    }
    std::vector<Change>& pending = m_pending[*fileSystem];
    const auto inFolder = [&path](const std::optional<QString>& name) {
        return name && QFileInfo(*name).path() == path;
    };
    const auto last = std::find_if(pending.rbegin(), pending.rend(), [&](const Change& change) {
        return isFolder ? inFolder(change.gone) || inFolder(change.come) : change.file == file;
    });
    for (auto change = pending.begin(); change != last.base(); ++change) {
        apply(m_known[*fileSystem], change->gone, change->come, change->file);
    }
    pending.erase(pending.begin(), last.base());
}

bool DiskModel::isNew(int file) const {
    const File& content = m_files[static_cast<std::size_t>(file)];
    return !content.isOld && content.isSynchronised && content.bytes == m_wholeSize;
}

bool DiskModel::isGood(int file) const {
    return m_files[static_cast<std::size_t>(file)].isOld || isNew(file);
}

std::vector<DiskModel::Names> DiskModel::statesOf(int fileSystem) const {
    std::vector<Names> states = {m_known.value(fileSystem)};
    for (const Change& change : m_pending.value(fileSystem)) {
        Names next = states.back();
        apply(next, change.gone, change.come, change.file);
        states.push_back(next);
    }
    return states;
}

int DiskModel::safeFiles() const {
    int safe = 0;
    for (const int fileSystem : fileSystems()) {
        int least = static_cast<int>(m_files.size());
        for (const Names& names : statesOf(fileSystem)) {
            int good = 0;
            for (auto name = names.cbegin(); name != names.cend(); ++name) {
                good += !isHidden(name.key()) && isGood(name.value()) ? 1 : 0;
            }
            least = std::min(least, good);
        }
        safe += least;
    }
    return safe;
}

bool DiskModel::isNewFileSafe() const {
    const std::vector<int> all = fileSystems();
    return std::any_of(all.begin(), all.end(), [this](int fileSystem) {
        const std::vector<Names> states = statesOf(fileSystem);
        return std::all_of(states.begin(), states.end(), [this](const Names& names) {
            return std::any_of(names.keyBegin(), names.keyEnd(), [&](const QString& name) {
                return !isHidden(name) && isNew(names[name]);
            });
        });
    });
}

bool DiskModel::isNewFileSafeAt(const QString& path) const {
    const std::vector<Names> states = statesOf(*fileSystemOf(path));
    return std::all_of(states.begin(), states.end(), [&](const Names& names) {
        return names.contains(path) && isNew(names[path]);
    });
}
