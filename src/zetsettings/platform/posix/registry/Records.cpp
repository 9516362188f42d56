#include "zetsettings/platform/posix/registry/Records.h"

#include "zetsettings/platform/posix/registry/ByteOrder.h"
#include "zetsettings/platform/posix/registry/StoreFailure.h"
#include "zetsettings/platform/posix/registry/WideText.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

const size_t kNameLengthSize = 4;
const size_t kIdSize = 8;
const size_t kTypeSize = 4;
const size_t kKeyInfoHeaderSize = 16;

const unsigned char* bytesOf(const MDB_val& value)
{
    return static_cast<const unsigned char*>(value.mv_data);
}

}  // namespace

std::u16string NamedRecordView::name() const
{
    return WideText::fromLittleEndian(nameBytes, nameUnits);
}

NamedRecordView NamedRecordView::parse(const MDB_val& data)
{
    if (data.mv_size < kNameLengthSize)
        throwCorruptRecord();
    NamedRecordView view;
    view.nameUnits = readLittleEndian32(bytesOf(data));
    if (view.nameUnits > (data.mv_size - kNameLengthSize) / 2)
        throwCorruptRecord();
    view.nameBytes = bytesOf(data) + kNameLengthSize;
    view.payload = view.nameBytes + 2 * view.nameUnits;
    view.payloadSize = data.mv_size - kNameLengthSize - 2 * view.nameUnits;
    return view;
}

std::string NamedRecordView::start(const std::u16string& name)
{
    std::string data;
    appendLittleEndian32(data, static_cast<uint32_t>(name.size()));
    WideText::appendLittleEndian(data, name);
    return data;
}

std::string SubkeyEntry::build(const std::u16string& name, uint64_t id)
{
    std::string data = NamedRecordView::start(name);
    appendLittleEndian64(data, id);
    return data;
}

uint64_t SubkeyEntry::idOf(const NamedRecordView& record)
{
    if (record.payloadSize != kIdSize)
        throwCorruptRecord();
    return readLittleEndian64(record.payload);
}

ValueRecordView ValueRecordView::parse(const MDB_val& record)
{
    ValueRecordView view;
    view.named = NamedRecordView::parse(record);
    if (view.named.payloadSize < kTypeSize)
        throwCorruptRecord();
    view.type = readLittleEndian32(view.named.payload);
    view.data = view.named.payload + kTypeSize;
    view.size = view.named.payloadSize - kTypeSize;
    return view;
}

std::string ValueRecordView::build(const std::u16string& name, uint32_t type, const std::string& data)
{
    std::string record = NamedRecordView::start(name);
    appendLittleEndian32(record, type);
    record += data;
    return record;
}

std::string KeyInfo::serialize() const
{
    std::string data;
    appendLittleEndian64(data, parent);
    appendLittleEndian64(data, lastWrite);
    data += NamedRecordView::start(name);
    return data;
}

KeyInfo KeyInfo::parse(const MDB_val& data)
{
    if (data.mv_size < kKeyInfoHeaderSize)
        throwCorruptRecord();
    KeyInfo info;
    info.parent = readLittleEndian64(bytesOf(data));
    info.lastWrite = readLittleEndian64(bytesOf(data) + 8);
    MDB_val rest = {data.mv_size - kKeyInfoHeaderSize, const_cast<unsigned char*>(bytesOf(data)) + kKeyInfoHeaderSize};
    const NamedRecordView named = NamedRecordView::parse(rest);
    if (named.payloadSize != 0)
        throwCorruptRecord();
    info.name = named.name();
    return info;
}

}  // namespace registry
}  // namespace portable
}  // namespace zet
