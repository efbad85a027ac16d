#include "ui/window/EndActionBar.h"

#include "app/queue/EndAction.h"
#include "support/base/ApplicationInfo.h"

#include <QPushButton>

EndActionBar::EndActionBar(EndAction& endAction, QWidget* parent)
    : NoticeBar(parent), m_endAction(endAction) {
    setObjectName(QStringLiteral("endActionBar"));
    proposedButton()->setObjectName(QStringLiteral("cancelEndActionButton"));
    proposedButton()->setText(tr("Cancel"));
    otherButton()->setObjectName(QStringLiteral("endActionNowButton"));
    otherButton()->setText(tr("Now"));
    connect(proposedButton(), &QPushButton::clicked, &endAction, &EndAction::cancel);
    connect(otherButton(), &QPushButton::clicked, &endAction, &EndAction::carryOut);
    connect(&endAction, &EndAction::countdownStarted, this, [this] { announce(text()); });
    connect(&endAction, &EndAction::changed, this, &EndActionBar::refresh);
}

void EndActionBar::refresh() {
    if (m_endAction.secondsLeft()) {
        setText(text());
    } else {
        conceal();
    }
}

QString EndActionBar::text() const {
    const QString seconds = QString::number(m_endAction.secondsLeft().value_or(0));
    switch (m_endAction.kind()) {
        case EndAction::Kind::Nothing:
            break;
        case EndAction::Kind::Quit:
            return tr("%1 quits in %2 s.").arg(ApplicationInfo::name(), seconds);
        case EndAction::Kind::Sleep:
            return tr("The computer goes to sleep in %1 s.").arg(seconds);
        case EndAction::Kind::ShutDown:
            return tr("The computer shuts down in %1 s.").arg(seconds);
    }
    return {};
}
