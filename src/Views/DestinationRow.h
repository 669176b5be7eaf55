// Where the next image goes, with the button that chooses it.
//
// Owned by the main window; main thread.
#pragma once

#include <QWidget>
#include <optional>

class QPushButton;
class TextLabel;

class DestinationRow final : public QWidget {
    Q_OBJECT

public:
    explicit DestinationRow(QWidget* parent = nullptr);

    // An absolute path; absent: none is chosen.
    void setDestination(const std::optional<QString>& path);
    void setChooseEnabled(bool enabled);
    void setRetro(bool retro);

signals:
    void chooseRequested();

private:
    TextLabel* m_path;
    QPushButton* m_choose;
};
