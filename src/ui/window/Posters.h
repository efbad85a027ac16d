#pragma once

#include "app/posters/PosterTaker.h"

#include <QCache>
#include <QObject>
#include <QPixmap>
#include <QTimer>

#include <functional>
#include <optional>

class ConversionJob;
class JobListModel;
class QListView;

/// The posters of the rows that are in view, and of the movie that was last asked for. Taken one after the
/// other while nothing is probed, and kept in memory only, the last few hundred of them. Movies that have
/// none are remembered. With the setting `ShowPosters` off it does nothing. Main thread only.
class Posters : public QObject {
    Q_OBJECT

public:
    /// `list` must outlive this object. While `isHeldUp` is true, no further poster is taken; call look()
    /// when it may have become false.
    Posters(QListView& list, std::function<bool()> isHeldUp);

    /// `model`, the one of the list, must outlive this object.
    void setModel(JobListModel* model);

    /// Null: there is none, or not yet.
    QPixmap poster(const ConversionJob& job) const;
    /// The same, and takes it if there is none yet, in front of those of the rows. changed() follows. Only
    /// the last movie that was asked for is taken.
    QPixmap poster(const QString& path, std::optional<qint32> runtimeSeconds);

    /// Takes what is missing, shortly.
    void look();
    /// The application ends: the tool is ended, and nothing follows.
    void stop();

Q_SIGNALS:
    /// poster() has another result for this movie; empty: for all.
    void changed(const QString& path);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Wish {
        QStringList paths;  ///< The movie, and for a finished job its output.
        std::optional<qint32> runtimeSeconds;
    };
    static Wish wishOf(const ConversionJob& job);
    static QString keyOf(const Wish& wish);
    QPixmap stored(const Wish& wish) const;
    bool isMissing(const Wish& wish) const;
    std::optional<Wish> nextWish() const;
    void takeNext();
    void keep(const QByteArray& rgb);
    void onSettingChanged();
    void updateRows(const QString& key);
    /// The rows in view, until `visit` returns false.
    void visitRows(const std::function<bool(const ConversionJob& job, int row)>& visit) const;

    QListView& m_list;
    JobListModel* m_model = nullptr;
    std::function<bool()> m_isHeldUp;
    PosterTaker m_taker;
    QTimer m_timer;
    QCache<QString, QPixmap> m_posters;  ///< By keyOf(); the cost is their bytes.
    QCache<QString, char> m_without;     ///< The paths of wishes that were in vain.
    std::optional<Wish> m_asked;
    Wish m_taken;  ///< What is being taken, or was last.
    double m_scale = 1;
    bool m_isStopped = false;
};
