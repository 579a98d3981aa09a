#include <link/packetcodec.h>
#include <support/testmain.h>

#include <QBitArray>
#include <QTest>
#include <QVariantList>

using namespace KEO;

namespace {

/// The bytes of a hexadecimal text in which "#" begins a comment.
QByteArray hex(const char *text)
{
    QByteArray digits;
    for (const QByteArray &line : QByteArray(text).split('\n'))
        digits += line.first(line.contains('#') ? line.indexOf('#') : line.size());
    return QByteArray::fromHex(digits);
}

QBitArray bits(qsizetype size, std::initializer_list<qsizetype> set)
{
    QBitArray array(size);
    for (const qsizetype bit : set)
        array.setBit(bit);
    return array;
}

/// A value of the wire inside \a depth lists of one element each.
QByteArray nested(int depth)
{
    return hex("0000000900 00000001").repeated(depth) + hex("0000000200 00000007");
}

QByteArray oneEntry(const QByteArray &value)
{
    return hex("00000001 00000002 0041") + value; // one entry, key "A"
}

} // namespace

class tst_PacketCodec : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void frames_data();
    void frames();
    void valuesWithoutWireForm();
    void wellFormed_data();
    void wellFormed();
    void hostile_data();
    void hostile();
};

void tst_PacketCodec::frames_data()
{
    const auto row = addColumns<CmdPack, QByteArray>({"pack", "frame"});

    row("OPEN", {{"CMD", "OPEN"}, {"CHAIN", QVariantList{0, -2}}, {"request_id", 0u}}, hex(R"(
            00000069  00000003                                # 105 bytes follow, 3 entries
            00000014  0072006500710075006500730074005f00690064 # request_id
                      00000003 00 00000000                     # UInt 0
            00000006  0043004d0044                             # CMD
                      0000000a 00 00000008 004f00500045004e    # String OPEN
            0000000a  0043004800410049004e                     # CHAIN
                      00000009 00 00000002                     # List of two
                      00000002 00 00000000                     # Int 0
                      00000002 00 fffffffe                     # Int -2
            )"));
    row("WRITE of 33 bits",
        {{"CMD", "WRITE"}, {"OPRATE", "WRITE_REGISTOR"}, {"DATA", bits(33, {0, 9, 32})}}, hex(R"(
            00000070  00000003                             # 112 bytes follow, 3 entries
            0000000c  004f00500052004100540045             # OPRATE
                      0000000a 00 0000001c                 # String of 28 bytes
                      00570052004900540045005f             # WRITE_
                      00520045004700490053 0054004f0052    # REGISTOR
            00000008  0044004100540041                     # DATA
                      0000000d 00 00000021 01 02 00 00 01  # BitArray, 33 bits in 5 bytes
            00000006  0043004d0044                         # CMD
                      0000000a 00 0000000a 00570052004900540045 # String WRITE
            )"));
    row("null text and empty values",
        {{"A", QString()}, {"B", QString("")}, {"C", QBitArray()}, {"D", QVariantList()}}, hex(R"(
            00000040  00000004                            # 64 bytes follow, 4 entries
            00000002  0044  00000009 00 00000000          # D, list of nothing
            00000002  0043  0000000d 00 00000000          # C, no bits
            00000002  0042  0000000a 00 00000000          # B, text of nothing
            00000002  0041  0000000a 00 ffffffff          # A, null text
            )"));
}

void tst_PacketCodec::frames()
{
    QFETCH(CmdPack, pack);
    QFETCH(QByteArray, frame);

    const auto encoded = encodeFrame(pack);
    QVERIFY(encoded);
    QCOMPARE(encoded->toHex(), frame.toHex());

    const auto decoded = decodePayload(frame.mid(4));
    QVERIFY(decoded);
    QCOMPARE(*decoded, pack);
    for (const char *key : {"A", "B"})
        QCOMPARE(decoded->value(key).toString().isNull(), pack.value(key).toString().isNull());
    for (qsizetype size = 4; size < frame.size(); ++size) // cut anywhere, it is malformed
        QVERIFY2(!decodePayload(frame.mid(4, size - 4)), qPrintable(QString::number(size)));
}

void tst_PacketCodec::valuesWithoutWireForm()
{
    QVariant deep = 7;
    for (int i = 0; i <= kMaxListDepth; ++i)
        deep = QVariantList{deep};
    for (const QVariant &value :
         {QVariant(qlonglong(1)), QVariant(), QVariant(QVariantList{1, true}), deep,
          QVariant(QBitArray(kMaxPayloadSize * 8))})
        QVERIFY(!encodeFrame({{"A", value}}));
}

void tst_PacketCodec::wellFormed_data()
{
    const auto row = addColumns<QByteArray, CmdPack>({"payload", "pack"});

    row("any order of keys",
        hex("00000003 00000002 0042 0000000200 00000002 00000002 0043 0000000200 00000003 "
            "00000002 0041 0000000200 00000001"),
        {{"A", 1}, {"B", 2}, {"C", 3}});
    row("the later of equal keys counts",
        hex("00000002 00000002 0041 0000000200 00000001 00000002 0041 0000000300 00000002"),
        {{"A", 2u}});
    row("bytes behind the last entry", oneEntry(hex("0000000200 00000001")) + "rest", {{"A", 1}});
    row("null flag set", oneEntry(hex("0000000201 00000005")), {{"A", 5}});
    row("padding of a bit array set", oneEntry(hex("0000000d00 00000003 fd")),
        {{"A", bits(3, {0, 2})}});
    row("lists as deep as allowed", oneEntry(nested(kMaxListDepth)),
        {{"A", QVariantList{
                   QVariant(QVariantList{QVariant(QVariantList{QVariant(QVariantList{7})})})}}});
}

void tst_PacketCodec::wellFormed()
{
    QFETCH(QByteArray, payload);
    QFETCH(CmdPack, pack);

    const auto decoded = decodePayload(payload);
    QVERIFY(decoded);
    QCOMPARE(*decoded, pack);
    QCOMPARE(encodeFrame(*decoded), encodeFrame(pack));
}

void tst_PacketCodec::hostile_data()
{
    const auto row = addColumns<QByteArray>({"payload"});

    row("no bytes at all", {});
    row("more entries than bytes", hex("ffffffff 00000002 0041"));
    row("one entry too few", hex("00000002 00000002 0041 0000000200 00000001"));
    row("key of odd length", hex("00000001 00000003 004100 0000000200 00000001"));
    row("text of odd length", oneEntry(hex("0000000a00 00000003 004100")));
    row("text beyond the frame", oneEntry(hex("0000000a00 fffffffe 0041")));
    row("bits beyond the frame", oneEntry(hex("0000000d00 00000011 ffff")));
    row("2^32 - 1 bits", oneEntry(hex("0000000d00 ffffffff ff")));
    row("list count beyond the frame", oneEntry(hex("0000000900 00000002 0000000200 00000001")));
    row("list count of 2^32 - 1", oneEntry(hex("0000000900 ffffffff 0000000200 00000001")));
    row("list of bad values", oneEntry(hex("0000000900 00000001 0000000400 00000001")));
    row("one list too deep", oneEntry(nested(kMaxListDepth + 1)));
    row("20,000 lists deep", oneEntry(nested(20'000)));
    row("type 4215 with a huge count", oneEntry(hex("0000107700 ffffffff")));
    row("no type", oneEntry(hex("0000000001 00000000")));
    row("type that is none of the link's", oneEntry(hex("0000000c00 00000000")));
    row("user type with a name", oneEntry(hex("0000007f00 00000008 514f626a65637400 00000000")));
}

void tst_PacketCodec::hostile()
{
    QFETCH(QByteArray, payload);
    QVERIFY(!decodePayload(payload));
}

KEO_TEST_MAIN(tst_PacketCodec)
#include "tst_packetcodec.moc"
