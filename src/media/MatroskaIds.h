#pragma once

#include <QtGlobal>

/// The ids of Matroska's elements, with their length marker.
namespace media::matroska {

enum Id : quint32 {
    Header = 0x1A45DFA3,
    Segment = 0x18538067,
    Void = 0xEC,
    Crc32 = 0xBF,

    SeekHead = 0x114D9B74,
    Info = 0x1549A966,
    Tracks = 0x1654AE6B,
    Cluster = 0x1F43B675,
    Cues = 0x1C53BB6B,
    Attachments = 0x1941A469,
    Chapters = 0x1043A770,
    Tags = 0x1254C367,

    TimestampScale = 0x2AD7B1,
    Duration = 0x4489,

    TrackEntry = 0xAE,
    TrackNumber = 0xD7,
    TrackType = 0x83,
    FlagEnabled = 0xB9,
    FlagDefault = 0x88,
    FlagForced = 0x55AA,
    DefaultDuration = 0x23E383,
    Name = 0x536E,
    Language = 0x22B59C,
    LanguageBcp47 = 0x22B59D,
    CodecId = 0x86,
    CodecPrivate = 0x63A2,
    CodecDelay = 0x56AA,
    Video = 0xE0,
    PixelWidth = 0xB0,
    PixelHeight = 0xBA,
    Audio = 0xE1,
    SamplingFrequency = 0xB5,
    Channels = 0x9F,
    ContentEncodings = 0x6D80,
    ContentEncoding = 0x6240,
    ContentEncodingScope = 0x5032,
    ContentEncodingType = 0x5033,
    ContentCompression = 0x5034,
    ContentCompAlgo = 0x4254,
    ContentCompSettings = 0x4255,

    Timestamp = 0xE7,
    SilentTracks = 0x5854,
    Position = 0xA7,
    PrevSize = 0xAB,
    SimpleBlock = 0xA3,
    BlockGroup = 0xA0,
    EncryptedBlock = 0xAF,
    Block = 0xA1,
    BlockDuration = 0x9B,
    ReferenceBlock = 0xFB,

    EditionEntry = 0x45B9,
    ChapterAtom = 0xB6,
    ChapterUid = 0x73C4,
    ChapterTimeStart = 0x91,

    AttachedFile = 0x61A7,
    FileMimeType = 0x4660,
};

/// Whether such an element may be at the top level of the file or of the segment.
bool isTopLevel(quint32 id);
bool isInCluster(quint32 id);

}  // namespace media::matroska
