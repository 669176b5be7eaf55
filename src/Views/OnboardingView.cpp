#include "OnboardingView.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "Appearance.h"
#include "ButtonTextColor.h"
#include "Divider.h"
#include "FullDiskAccess.h"
#include "HelpPage.h"
#include "StatusPill.h"
#include "Symbol.h"
#include "TextLabel.h"
#include "TextStyle.h"

namespace {

constexpr int sheetWidth = 460;

// The number of a step, white on a disc of the accent colour.
class StepNumber final : public QWidget {
public:
    StepNumber(int number, QWidget* parent) : QWidget(parent), m_number(number) {
        setFixedSize(24, 24);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        // The accent as it is behind white texts.
        painter.setBrush(palette().color(QPalette::Highlight));
        painter.drawEllipse(rect());
        painter.setPen(Qt::white);
        painter.setFont(TextStyle::font(TextStyle::Style::Subheadline, QFont::Bold));
        painter.drawText(rect(), Qt::AlignCenter, locale().toString(m_number));
    }

private:
    int m_number;
};

}  // namespace

OnboardingView::OnboardingView(std::function<void()> onDismiss, QWidget* parent)
    : OnboardingView(OnboardingActions{std::move(onDismiss), &FullDiskAccess::isGranted,
                                       [](QWidget* guide) {
                                           openAccessOfSystem(guide, DiscAccess::programs());
                                       }},
                     parent) {}

OnboardingView::OnboardingView(OnboardingActions actions, QWidget* parent)
    : QDialog(parent), m_actions(std::move(actions)), m_granted(m_actions.isGranted()) {
    setObjectName(QStringLiteral("onboarding"));
    setWindowTitle(tr("Welcome to Spindrift"));
    setWindowModality(Qt::WindowModal);

    m_content = new QWidget(this);
    auto* content = m_content;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeHeader());
    column->addWidget(new Divider(content));
    column->addWidget(makeSteps());
    column->addWidget(new Divider(content));
    column->addWidget(makeFooter());

    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSizeConstraint(QLayout::SetFixedSize);
    outer->addWidget(content);

    m_poll.setInterval(pollMilliseconds);
    connect(&m_poll, &QTimer::timeout, this, &OnboardingView::refresh);
    showState();
    m_primary->setFocus();
}

QWidget* OnboardingView::makeHeader() {
    auto* header = new QWidget(this);
    auto* column = new QVBoxLayout(header);
    column->setContentsMargins(24, 24, 24, 24);
    column->setSpacing(12);

    const QPixmap pixmap = Symbol::applicationIcon().pixmap(QSize(72, 72), devicePixelRatioF());
    if (!pixmap.isNull()) {
        auto* picture = new QLabel(header);
        picture->setObjectName(QStringLiteral("applicationIcon"));
        picture->setPixmap(pixmap);
        picture->setFixedSize(72, 72);
        column->addWidget(picture, 0, Qt::AlignHCenter);
    }
    auto* title = new TextLabel(tr("Welcome to Spindrift"),
                                TextStyle::font(TextStyle::Style::Title, QFont::Bold),
                                Appearance::Role::Primary, TextLabel::Wrap::Yes, header);
    title->setObjectName(QStringLiteral("onboardingTitle"));
    title->setAlignment(Qt::AlignCenter);
    column->addWidget(title);

    auto* reason = new TextLabel(
        tr("To rip a disc, macOS needs to let Spindrift read from your optical drive. Granting "
           "<b>Full Disk Access</b> once means you won't be asked for permission every time you "
           "start a rip."),
        TextStyle::font(TextStyle::Style::Callout), Appearance::Role::Secondary,
        TextLabel::Wrap::Yes, header);
    reason->setObjectName(QStringLiteral("onboardingReason"));
    // The only text of the guide with a bold part; it is the program's own, not a disc's.
    reason->setTextFormat(Qt::RichText);
    reason->setAlignment(Qt::AlignCenter);
    column->addWidget(reason);
    return header;
}

QWidget* OnboardingView::makeSteps() {
    auto* steps = new QWidget(this);
    auto* column = new QVBoxLayout(steps);
    column->setContentsMargins(24, 24, 24, 24);
    column->setSpacing(14);
    column->addWidget(makeStep(1, tr("Open Full Disk Access"),
                               tr("We'll take you straight to the right settings pane.")));
    column->addWidget(makeStep(2, tr("Turn on Spindrift"),
                               tr("Flip the switch next to Spindrift in the list. You may need to "
                                  "add it with the + button.")));
    column->addWidget(makeStep(3, tr("Come back here"),
                               tr("This screen updates on its own once access is granted.")));
    column->addSpacing(4);
    m_pill = new StatusPill(steps);
    m_pill->setObjectName(QStringLiteral("accessPill"));
    column->addWidget(m_pill, 0, Qt::AlignHCenter);
    return steps;
}

QWidget* OnboardingView::makeStep(int number, const QString& title, const QString& detail) {
    auto* step = new QWidget(this);
    auto* row = new QHBoxLayout(step);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(12);
    auto* circle = new StepNumber(number, step);
    circle->setObjectName(QStringLiteral("stepNumber%1").arg(number));
    row->addWidget(circle, 0, Qt::AlignTop);

    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    auto* titleLabel =
        new TextLabel(title, TextStyle::font(TextStyle::Style::Callout, QFont::DemiBold),
                      Appearance::Role::Primary, TextLabel::Wrap::Yes, step);
    titleLabel->setObjectName(QStringLiteral("stepTitle%1").arg(number));
    auto* detailLabel = new TextLabel(detail, TextStyle::font(TextStyle::Style::Caption),
                                      Appearance::Role::Secondary, TextLabel::Wrap::Yes, step);
    detailLabel->setObjectName(QStringLiteral("stepDetail%1").arg(number));
    texts->addWidget(titleLabel);
    texts->addWidget(detailLabel);
    row->addLayout(texts, 1);
    return step;
}

QWidget* OnboardingView::makeFooter() {
    auto* footer = new QWidget(this);
    auto* row = new QHBoxLayout(footer);
    row->setContentsMargins(20, 20, 20, 20);

    auto* skip = new QPushButton(tr("Skip for now"), footer);
    skip->setObjectName(QStringLiteral("skipButton"));
    skip->setFlat(true);
    skip->setAutoDefault(false);
    new ButtonTextColor(Appearance::Role::Secondary, skip);
    connect(skip, &QPushButton::clicked, this, [this] { m_actions.onDismiss(); });
    row->addWidget(skip, 0, Qt::AlignVCenter);
    row->addStretch();

    m_primary = new QPushButton(footer);
    m_primary->setObjectName(QStringLiteral("primaryButton"));
    m_primary->setDefault(true);
    connect(m_primary, &QPushButton::clicked, this, &OnboardingView::primaryPressed);
    row->addWidget(m_primary, 0, Qt::AlignVCenter);
    return footer;
}

void OnboardingView::showState() {
    if (m_granted) {
        m_pill->show(QStringLiteral("checkmark.seal.fill"), tr("Full Disk Access is enabled"),
                     Appearance::Role::Green, Appearance::Role::Green);
        m_primary->setText(tr("Get Started"));
        m_primary->setAccessibleDescription(tr("Closes this guide"));
    } else {
        m_pill->show(QStringLiteral("lock.fill"), tr("Full Disk Access not enabled yet"),
                     Appearance::Role::Secondary, Appearance::Role::Gray);
        m_primary->setText(tr("Open Full Disk Access…"));
        m_primary->setAccessibleDescription(tr("Asks the system to let you read optical discs"));
    }
    // Wider only where a very large font leaves too little room for the two buttons.
    const int needed = m_primary->parentWidget()->minimumSizeHint().width();
    m_content->setFixedWidth(qMax(qMax(sheetWidth, m_content->minimumWidth()), needed));
}

void OnboardingView::refresh() {
    const bool granted = m_actions.isGranted();
    if (granted != m_granted) {
        m_granted = granted;
        showState();
    }
}

void OnboardingView::primaryPressed() {
    if (m_granted) {
        m_actions.onDismiss();
    } else {
        m_actions.openAccess(this);
    }
}

void OnboardingView::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    refresh();
    m_poll.start();
}

void OnboardingView::hideEvent(QHideEvent* event) {
    m_poll.stop();
    QDialog::hideEvent(event);
}

void OnboardingView::openAccessOfSystem(QWidget* guide,
                                        const std::optional<DiscAccess::Programs>& programs) {
    // One question at a time, however often the button is pressed.
    constexpr const char* asking = "askingForAccess";
    if (guide->property(asking).toBool()) {
        return;
    }
    guide->setProperty(asking, true);
    DiscAccess::request(programs, guide, [guide](DiscAccess::Outcome outcome) {
        guide->setProperty(asking, false);
        switch (outcome) {
            case DiscAccess::Outcome::Granted:  // the poll shows it
            case DiscAccess::Outcome::Declined:
                break;
            case DiscAccess::Outcome::Failed:
            case DiscAccess::Outcome::Unavailable:
                HelpPage::openDiscAccess(guide);
                break;
        }
    });
}

#include "moc_OnboardingView.cpp"
