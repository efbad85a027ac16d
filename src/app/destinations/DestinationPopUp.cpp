#include "app/destinations/DestinationPopUp.h"

#include "support/base/Texts.h"

namespace {

using Kind = DestinationItem::Kind;

QList<DestinationItem> itemsFor(DestinationPopUp::Place place, const QStringList& names) {
    QList<DestinationItem> items{{Kind::Ask, Texts::tr("Ask for each movie")},
                                 {Kind::NextToSource, Texts::tr("Next to the movie")}};
    if (!names.isEmpty()) {
        items.append({Kind::Separator, {}});
        for (const QString& name : names)
            items.append({Kind::Folder, name});
    }
    items.append({Kind::Separator, {}});
    items.append({Kind::Choose, Texts::tr("Choose a Folder…")});
    if (place == DestinationPopUp::Place::Preferences)
        items.append({Kind::Clear, Texts::tr("Forget All Folders")});
    return items;
}

}  // namespace

DestinationPopUp::DestinationPopUp(Place place, QObject* parent)
    : QObject(parent), m_place(place), m_items(itemsFor(place, {})) {}

void DestinationPopUp::select(qsizetype index) {
    m_selected = index;
    Q_EMIT changed();
}

void DestinationPopUp::choose(qsizetype index) {
    m_isChosen = true;
    select(index);
}

void DestinationPopUp::rebuild(const QStringList& names, qsizetype index) {
    m_isChosen = false;
    m_items = itemsFor(m_place, names);
    select(index);
}
