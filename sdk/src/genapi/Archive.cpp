#include "genapi/Archive.h"

#include "norvane/Exception.h"

#include <zip.h>

#include <memory>

namespace Norvane::GenApi {

namespace {

constexpr zip_uint64_t kLargestText = 256u << 20;

struct Closer {
    void operator()(zip_t* archive) const { zip_discard(archive); }
    void operator()(zip_file_t* file) const { zip_fclose(file); }
};

[[noreturn]] void Damaged(const std::string& what) {
    throw Exception(Error::FileFormat, "The zipped camera description " + what +
                                           "; read it from the camera again or give the plain XML file");
}

bool IsXml(std::string_view name) {
    return name.size() > 4 &&
           (name.substr(name.size() - 4) == ".xml" || name.substr(name.size() - 4) == ".XML");
}

} // namespace

bool IsArchive(std::string_view file) {
    return file.substr(0, 2) == "PK";
}

std::string DescriptionText(std::string_view file) {
    if (!IsArchive(file)) {
        return std::string(file);
    }
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* source = zip_source_buffer_create(file.data(), file.size(), 0, &error);
    const std::unique_ptr<zip_t, Closer> archive(source ? zip_open_from_source(source, ZIP_RDONLY, &error)
                                                        : nullptr);
    if (!archive) {
        const std::string reason = zip_error_strerror(&error);
        zip_error_fini(&error);
        zip_source_free(source);
        Damaged("cannot be opened (" + reason + ")");
    }
    zip_error_fini(&error);

    const zip_int64_t count = zip_get_num_entries(archive.get(), 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        const char* name = zip_get_name(archive.get(), static_cast<zip_uint64_t>(i), 0);
        // A file that a camera serves may hold its only entry under any name.
        if (!name || (count > 1 && !IsXml(name))) {
            continue;
        }
        zip_stat_t stat;
        if (zip_stat_index(archive.get(), static_cast<zip_uint64_t>(i), 0, &stat) != 0 ||
            !(stat.valid & ZIP_STAT_SIZE)) {
            Damaged(std::string("has a damaged entry '") + name + "'");
        }
        if (stat.size > kLargestText) {
            Damaged(std::string("unpacks '") + name + "' to more than 256 MB");
        }
        const std::unique_ptr<zip_file_t, Closer> entry(
            zip_fopen_index(archive.get(), static_cast<zip_uint64_t>(i), 0));
        std::string text(stat.size, '\0');
        // One byte more than announced makes libzip compare the checksum.
        char beyond = 0;
        if (!entry ||
            zip_fread(entry.get(), text.data(), text.size()) != static_cast<zip_int64_t>(text.size()) ||
            zip_fread(entry.get(), &beyond, 1) != 0) {
            Damaged(std::string("has a damaged entry '") + name + "'");
        }
        return text;
    }
    Damaged("holds no XML file");
}

} // namespace Norvane::GenApi
