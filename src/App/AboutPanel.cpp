#include "AboutPanel.h"

#include <QCoreApplication>
#include <QLabel>
#include <QShortcut>
#include <QVBoxLayout>

#include "Appearance.h"
#include "Symbol.h"
#include "TextLabel.h"
#include "TextStyle.h"

AboutPanel::AboutPanel(QWidget* parent) : QDialog(parent) {
    using Appearance::Role;
    constexpr int iconSide = 96;
    setObjectName(QStringLiteral("aboutPanel"));
    setWindowTitle(tr("About Spindrift"));
    Appearance::follow();

    auto* icon = new QLabel(this);
    icon->setObjectName(QStringLiteral("aboutIcon"));
    icon->setPixmap(
        Symbol::applicationIcon().pixmap(QSize(iconSide, iconSide), devicePixelRatioF()));
    auto* name =
        new TextLabel(tr("Spindrift"), TextStyle::font(TextStyle::Style::Title2, QFont::Bold),
                      Role::Primary, TextLabel::Wrap::No, this);
    auto* version = new TextLabel(tr("Version %1").arg(QCoreApplication::applicationVersion()),
                                  TextStyle::font(TextStyle::Style::Subheadline), Role::Primary,
                                  TextLabel::Wrap::No, this);
    auto* credits = new TextLabel(tr("Made for everyone who still has a shelf of discs."),
                                  TextStyle::font(TextStyle::Style::Subheadline), Role::Secondary,
                                  TextLabel::Wrap::Yes, this);
    name->setObjectName(QStringLiteral("aboutName"));
    version->setObjectName(QStringLiteral("aboutVersion"));
    credits->setObjectName(QStringLiteral("aboutCredits"));
    for (TextLabel* label : {name, version, credits}) {
        label->setAlignment(Qt::AlignCenter);
    }

    auto* inner = new QWidget(this);
    inner->setFixedWidth(300);
    auto* column = new QVBoxLayout(inner);
    column->setContentsMargins(20, 24, 20, 24);
    column->setSpacing(8);
    column->addWidget(icon, 0, Qt::AlignHCenter);
    column->addWidget(name);
    column->addWidget(version);
    column->addWidget(credits);
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSizeConstraint(QLayout::SetFixedSize);
    outer->addWidget(inner);
    connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_W), this), &QShortcut::activated, this,
            &QDialog::close);
}

#include "moc_AboutPanel.cpp"
