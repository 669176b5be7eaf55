// The first-run guide: why reading a disc needs a permission, how to get it, and whether it is
// there.
//
// A window-modal sheet of the main window, on the main thread; open it with open(). While it is
// shown it asks for the permission every 1.5 seconds and follows it both ways; it never closes by
// itself and writes no setting.
#pragma once

#include <QDialog>
#include <QTimer>
#include <functional>
#include <optional>

#include "DiscAccess.h"

class QPushButton;
class StatusPill;

// What the guide calls. All on the main thread.
struct OnboardingActions {
    std::function<void()> onDismiss;                 // both buttons that close the sheet
    std::function<bool()> isGranted;                 // the permission; quick
    std::function<void(QWidget* guide)> openAccess;  // "Open Full Disk Access…"
};

class OnboardingView final : public QDialog {
    Q_OBJECT

public:
    static constexpr int pollMilliseconds = 1500;

    // With the real permission and the system's way to grant it.
    OnboardingView(std::function<void()> onDismiss, QWidget* parent);
    OnboardingView(OnboardingActions actions, QWidget* parent);

    bool granted() const { return m_granted; }
    // One tick of the poll.
    void refresh();

    // Asks the system for the permission (an administrator's password) with these programs; opens
    // the help page where the system cannot be asked, or the request failed. Nothing while an
    // earlier request is under way.
    static void openAccessOfSystem(QWidget* guide,
                                   const std::optional<DiscAccess::Programs>& programs);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QWidget* makeHeader();
    QWidget* makeSteps();
    QWidget* makeStep(int number, const QString& title, const QString& detail);
    QWidget* makeFooter();
    void showState();
    void primaryPressed();

    OnboardingActions m_actions;
    bool m_granted;
    QTimer m_poll;
    QWidget* m_content = nullptr;
    StatusPill* m_pill = nullptr;
    QPushButton* m_primary = nullptr;
};
