#include "drivers/virtual/cards/file_tree.h"

#include <algorithm>

#include "drivers/core/ber_tlv.h"

namespace drivers::cards {

namespace {

void append(Bytes &bytes, const Bytes &more)
{
    bytes.insert(bytes.end(), more.begin(), more.end());
}

Bytes twoBytes(std::size_t number)
{
    return {static_cast<std::uint8_t>(number >> 8U), static_cast<std::uint8_t>(number & 0xFFU)};
}

/// File descriptor byte, and for records the data coding byte, the longest record and their number.
Bytes fileDescriptor(const ElementaryFile &file)
{
    if (!file.hasRecords)
        return {0x01};
    std::size_t longest = 0;
    for (const auto &[number, record] : file.records)
        longest = std::max(longest, record.size());
    Bytes descriptor{0x04, 0x21};
    append(descriptor, twoBytes(longest));
    descriptor.push_back(static_cast<std::uint8_t>(file.records.size()));
    return descriptor;
}

std::size_t sizeOf(const ElementaryFile &file)
{
    std::size_t size = file.content.size();
    for (const auto &[number, record] : file.records)
        size += record.size();
    return size;
}

} // namespace

Directory &Directory::add(std::uint16_t childId)
{
    directories.push_back(std::make_unique<Directory>());
    directories.back()->id = childId;
    directories.back()->parent = this;
    return *directories.back();
}

ElementaryFile *Directory::file(std::uint16_t fileId)
{
    const auto found = std::find_if(files.begin(), files.end(), [=](const auto &f) { return f.id == fileId; });
    return found == files.end() ? nullptr : &*found;
}

ElementaryFile *Directory::fileByShortId(std::uint8_t shortId)
{
    const auto matches = [=](const ElementaryFile &f) { return shortId != 0 && f.shortId == shortId; };
    const auto found = std::find_if(files.begin(), files.end(), matches);
    return found == files.end() ? nullptr : &*found;
}

Directory *Directory::directory(std::uint16_t directoryId)
{
    const auto matches = [=](const auto &d) { return d->id == directoryId; };
    const auto found = std::find_if(directories.begin(), directories.end(), matches);
    return found == directories.end() ? nullptr : found->get();
}

Pin *Directory::guard()
{
    if (pin)
        return &*pin;
    return parent != nullptr ? parent->guard() : nullptr;
}

bool Directory::contains(const Directory &other) const
{
    for (const Directory *directory = &other; directory != nullptr; directory = directory->parent) {
        if (directory == this)
            return true;
    }
    return false;
}

void forEachDirectory(Directory &root, const std::function<void(Directory &)> &visit)
{
    visit(root);
    for (const auto &child : root.directories)
        forEachDirectory(*child, visit);
}

Bytes controlInformation(const Directory &directory, std::uint8_t templateTag)
{
    Bytes value;
    if (directory.proprietary.empty()) {
        append(value, encodeTlv(0x82, {0x38}));
        append(value, encodeTlv(0x83, twoBytes(directory.id)));
    }
    if (!directory.name.empty())
        append(value, encodeTlv(0x84, directory.name));
    if (!directory.proprietary.empty())
        append(value, encodeTlv(0xA5, directory.proprietary));
    return encodeTlv(templateTag, value);
}

Bytes controlInformation(const ElementaryFile &file, std::uint8_t templateTag)
{
    Bytes value = encodeTlv(0x80, twoBytes(sizeOf(file)));
    append(value, encodeTlv(0x82, fileDescriptor(file)));
    append(value, encodeTlv(0x83, twoBytes(file.id)));
    if (file.shortId != 0)
        append(value, encodeTlv(0x88, {static_cast<std::uint8_t>(file.shortId << 3U)}));
    return encodeTlv(templateTag, value);
}

} // namespace drivers::cards
