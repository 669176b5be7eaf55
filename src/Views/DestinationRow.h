// Where the next image goes, with the button that chooses it.
//
// Belongs to the column of the main window, whose children its widgets are: a gel button's shadow
// needs room outside of the row. Main thread.
#pragma once

#include <QHBoxLayout>
#include <optional>

class QPushButton;
class TextLabel;

class DestinationRow final : public QHBoxLayout {
    Q_OBJECT

public:
    explicit DestinationRow(QWidget* owner);

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
