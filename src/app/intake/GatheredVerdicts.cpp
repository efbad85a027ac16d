#include "app/intake/GatheredVerdicts.h"

#include "support/alerts/AlertQueue.h"
#include "support/alerts/DontWarnAgain.h"
#include "support/base/Texts.h"

#include <QHash>
#include <QStringList>

#include <utility>

namespace {

/// One message and the movies that it is about.
struct Group {
    Verdict verdict;
    QStringList fileNames;
};

QString textOf(const Group& group) {
    const QStringList others = group.fileNames.mid(1);
    if (others.isEmpty()) return group.verdict.message;
    return Texts::tr("%1 The same holds for: %2.")
        .arg(group.verdict.message, u'“' + others.join(QStringLiteral("”, “")) + u'”');
}

}  // namespace

void GatheredVerdicts::add(const QString& fileName, const Verdict& verdict) {
    m_items.push_back({fileName, verdict});
}

void GatheredVerdicts::show() {
    std::vector<Group> groups;
    QHash<QString, size_t> known;
    for (const Item& item : std::exchange(m_items, {})) {
        if (!item.verdict.isDue() || isWarningSuppressed(item.verdict.key)) continue;
        QString general = item.verdict.message;
        general.replace(item.fileName, QString());
        const auto group = known.constFind(general);
        if (group != known.cend()) {
            groups[*group].fileNames.append(item.fileName);
        } else {
            known.insert(general, groups.size());
            groups.push_back({item.verdict, {item.fileName}});
        }
    }
    if (groups.empty()) return;
    if (groups.size() == 1 && groups.front().fileNames.size() == 1) {
        showInTurn([verdict = groups.front().verdict] { verdicts::show(verdict); });
        return;
    }
    QStringList keys;
    QStringList texts;
    for (const Group& group : groups) {
        if (!group.verdict.key.isEmpty()) keys.append(group.verdict.key);
        texts.append(textOf(group));
    }
    keys.removeDuplicates();
    showInTurn([keys, text = texts.join(QStringLiteral("\n\n"))] {
        alert_dontwarnagain_list(keys, Texts::tr("Warning"),
                                 Texts::tr("About the movies that were added together:"), text,
                                 Texts::tr("OK"), Texts::tr("Don't warn again"));
    });
}
