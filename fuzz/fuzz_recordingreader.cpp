// SPDX-License-Identifier: MIT
#include "mismatch.h"

#include "shared/recordingreader.h"

#include <QBuffer>

#include <cstddef>
#include <cstdint>

using namespace SondixQt;
using namespace SondixApp;

namespace {

/// What a reader makes of a file.
struct Reading
{
    bool isOpen = false;
    QByteArray items; ///< all that was delivered, frame by frame
    bool isWhole = true;
    QString problem;
};

std::unique_ptr<QIODevice> deviceOf(const QByteArray &bytes)
{
    auto buffer = std::make_unique<QBuffer>();
    buffer->setData(bytes);
    buffer->open(QIODevice::ReadOnly);
    return buffer;
}

void describe(const DataBlock &block, QByteArray &text)
{
    if (block.isEmpty() || block.valuesPerFrame() < 1 || block.scaledData().size() != block.rawData().size())
        reportMismatch("block", text, QByteArray("no whole frames"), QByteArray("whole frames"));
    for (int frame = 0; frame < block.frameCount(); ++frame) {
        text += 'f' + QByteArray::number(block.run()) + ' ' + QByteArray::number(block.firstFrame() + frame);
        for (int i = 0; i < block.valuesPerFrame(); ++i)
            text += ' ' + QByteArray::number(block.scaled(frame, i), 'g', 17) + ' ' +
                    QByteArray::number(block.raw(frame, i));
        text += '\n';
    }
}

void describe(const DataGap &gap, QByteArray &text)
{
    text += 'g' + QByteArray::number(gap.run) + ' ' + QByteArray::number(gap.firstFrame) + ' ' +
            QByteArray::number(gap.frames.value_or(-1)) + '\n';
}

Reading readAll(const QByteArray &data, const QByteArray &notes)
{
    RecordingReader reader(deviceOf(data), notes.isEmpty() ? nullptr : deviceOf(notes));
    Reading reading;
    reading.isOpen = reader.open();
    while (const auto item = reader.next())
        std::visit([&reading](const auto &part) { describe(part, reading.items); }, *item);
    reading.problem = reader.problem();
    reading.isWhole = reader.warning().isEmpty();
    return reading;
}

} // namespace

/// The first byte divides the rest into the recording and the second file that a .npy recording has. A recording that is
/// cut off must give the first frames and gaps of the whole one.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const int split = bytes.isEmpty() ? 0 : static_cast<unsigned char>(bytes.at(0)) * bytes.size() / 256;
    const QByteArray notes = bytes.mid(1, split);
    const QByteArray file = bytes.mid(1 + split);
    const Reading whole = readAll(file, notes);
    if (whole.isOpen ? !whole.items.isEmpty() && whole.problem.size() > 400 : whole.problem.isEmpty())
        reportMismatch("problem", file, whole.problem.toUtf8(), QByteArray("a short reason"));
    if (file.startsWith("\x93NUMPY"))
        return 0; // gaps beside a cut array come at its end
    const int cut = file.size() / 2;
    const Reading part = readAll(file.left(cut), {});
    if (part.isOpen && whole.isOpen && !whole.items.startsWith(part.items))
        reportMismatch("cut file", file, part.items, whole.items);
    return 0;
}
