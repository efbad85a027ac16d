#include "cli/JsonRecords.h"

#include "convert/plan/SizeEstimate.h"

namespace json {

namespace {

QJsonArray messageArray(const Messages& messages) {
    QJsonArray array;
    for (const auto& message : messages)
        array.append(json::message(message));
    return array;
}

QJsonValue runtime(const MKVFileInfo& record) {
    return record.runtimeSeconds ? QJsonValue(*record.runtimeSeconds) : QJsonValue();
}

QJsonValue textOrNull(const QString& text) {
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

}  // namespace

QString word(PlannedTrack::Kind kind) {
    switch (kind) {
        case PlannedTrack::Kind::Video:
            return "video";
        case PlannedTrack::Kind::Audio:
            return "audio";
        case PlannedTrack::Kind::Subtitle:
            return "subtitle";
        case PlannedTrack::Kind::Attachment:
            return "attachment";
        case PlannedTrack::Kind::Data:
            break;
    }
    return "data";
}

QString word(PlannedTrack::Action action) {
    switch (action) {
        case PlannedTrack::Action::Copied:
            return "copied";
        case PlannedTrack::Action::Converted:
            return "converted";
        case PlannedTrack::Action::LeftOut:
            break;
    }
    return "leftOut";
}

QJsonObject message(const ConsolePresenter::Message& message) {
    return {{"key", textOrNull(message.key)}, {"title", message.title}, {"message", message.message}};
}

QJsonObject probed(const QString& file, const std::optional<MKVFileInfo>& record,
                   std::optional<qsizetype> bestTrack, const Messages& messages) {
    QJsonObject object = refused(file, messages);
    if (!record) return object;
    object.insert("accepted", true);
    QJsonArray audio;
    QJsonArray rates;
    for (const AudioEntry& entry : record->audioTrackInformation) {
        audio.append(entry.text);
        rates.append(entry.sampleRate);
    }
    QJsonArray subtitles;
    for (const int stream : record->subtitleTrackIDs)
        subtitles.append(stream);
    object.insert("fileName", record->fileName);
    object.insert("informationString", record->informationString);
    object.insert("videoTrackID", record->videoTrackID);
    object.insert("videoTrackCodec", record->videoTrackCodec);
    object.insert("runtimeSeconds", runtime(*record));
    object.insert("fileSize", static_cast<qint64>(record->fileSize));
    object.insert("audioTrackInformation", audio);
    object.insert("sampleRates", rates);
    object.insert("subtitleTrackIDs", subtitles);
    object.insert("bestLanguage",
                  bestTrack ? QJsonValue(record->audioTrackInformation[*bestTrack].text) : QJsonValue());
    return object;
}

QJsonObject refused(const QString& file, const Messages& messages) {
    return {{"file", file}, {"accepted", false}, {"messages", messageArray(messages)}};
}

QJsonArray tracks(const ConversionPlan& plan) {
    QJsonArray array;
    for (const PlannedTrack& track : plan.tracks) {
        array.append(QJsonObject{{"stream", track.stream ? QJsonValue(*track.stream) : QJsonValue()},
                                 {"kind", word(track.kind)},
                                 {"codec", track.codec},
                                 {"language", track.language},
                                 {"title", track.title},
                                 {"action", word(track.action)},
                                 {"to", textOrNull(track.to)},
                                 {"reason", textOrNull(track.reason)}});
    }
    return array;
}

QJsonObject planned(const MKVFileInfo& record, const ConversionPlan& plan, const QStringList& arguments,
                    const Messages& messages) {
    const auto bytes = estimatedOutputBytes(record, plan);
    return {{"file", record.fileURL.toLocalFile()},
            {"accepted", true},
            {"fileSize", static_cast<qint64>(record.fileSize)},
            {"runtimeSeconds", runtime(record)},
            {"estimatedOutputBytes", bytes ? QJsonValue(static_cast<qint64>(*bytes)) : QJsonValue()},
            {"messages", messageArray(messages)},
            {"tracks", tracks(plan)},
            {"arguments", QJsonArray::fromStringList(arguments)}};
}

}  // namespace json
