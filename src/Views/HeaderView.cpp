#include "HeaderView.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "Aqua.h"
#include "IconButton.h"
#include "SymbolIcon.h"
#include "TextLabel.h"
#include "TextStyle.h"

HeaderView::HeaderView(QWidget* parent)
    : QWidget(parent),
      m_title(new TextLabel(tr("Spindrift"), Appearance::Role::Primary, TextLabel::Wrap::No, this)),
      m_subtitle(new TextLabel(tr("Create a raw ISO image from a CD or DVD"),
                               Appearance::Role::Secondary, TextLabel::Wrap::Yes, this)),
      m_diagnostics(new IconButton(QStringLiteral("gauge.with.dots.needle.67percent"), 18,
                                   Appearance::Role::Primary, tr("Drive Diagnostics"), this)) {
    m_title->setObjectName(QStringLiteral("title"));
    m_subtitle->setObjectName(QStringLiteral("subtitle"));
    m_diagnostics->setObjectName(QStringLiteral("diagnosticsButton"));
    auto* icon =
        new SymbolIcon(QStringLiteral("opticaldiscdrive.fill"), 28, Appearance::Role::Accent, this);
    icon->setObjectName(QStringLiteral("headerIcon"));

    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addWidget(m_title);
    texts->addWidget(m_subtitle);

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addWidget(icon);
    row->addLayout(texts, 1);
    row->addWidget(m_diagnostics);
    setRetro(false);
    connect(m_diagnostics, &IconButton::clicked, this, &HeaderView::diagnosticsRequested);
}

void HeaderView::setRetro(bool retro) {
    m_title->setFont(retro ? Aqua::font(20, QFont::Bold)
                           : TextStyle::font(TextStyle::Style::Title, QFont::Bold));
    m_subtitle->setFont(retro ? Aqua::font(11) : TextStyle::font(TextStyle::Style::Caption));
}

#include "moc_HeaderView.cpp"
