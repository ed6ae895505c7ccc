#include "bare_apply.h"

#include "update/files/file_copy.h"
#include "update/files/text_file.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zip.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr std::size_t block = 1 << 18; // bytes

// A file that is written.
class NewFile {
public:
    explicit NewFile(const fs::path &path)
        : descriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644)) {
        if (descriptor < 0)
            qFatal("cannot write %s", path.c_str());
    }
    ~NewFile() { ::close(descriptor); }
    Q_DISABLE_COPY(NewFile)

    const int descriptor;
};

void copyFile(const fs::path &from, const fs::path &to) {
    const int source = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
    const NewFile target(to);
    struct stat about {};
    if (source < 0 || ::fstat(source, &about) != 0)
        qFatal("cannot read %s", from.c_str());
    for (off_t left = about.st_size; left > 0;) {
        const ssize_t done =
            ::copy_file_range(source, nullptr, target.descriptor, nullptr, std::size_t(left), 0);
        if (done <= 0)
            qFatal("cannot copy %s", from.c_str());
        left -= done;
    }
    ::close(source);
}

void copyFolder(const fs::path &from, const fs::path &to) {
    fs::create_directory(to);
    for (const fs::directory_entry &entry : fs::directory_iterator(from)) {
        const fs::path target = to / entry.path().filename();
        if (entry.is_directory())
            copyFolder(entry.path(), target);
        else
            copyFile(entry.path(), target);
    }
}

void unpackEntry(zip_t *archive, zip_uint64_t index, const fs::path &to, std::vector<char> *bytes) {
    zip_file_t *const content = zip_fopen_index(archive, index, 0);
    const NewFile file(to);
    zip_int64_t size = 0;
    while ((size = zip_fread(content, bytes->data(), bytes->size())) > 0) {
        if (::write(file.descriptor, bytes->data(), std::size_t(size)) != size)
            qFatal("cannot write %s", to.c_str());
    }
    if (size < 0)
        qFatal("cannot unpack %s", to.c_str());
    zip_fclose(content);
}

void unpack(const fs::path &package, const fs::path &to) {
    const std::unique_ptr<zip_t, void (*)(zip_t *)> archive(
        zip_open(package.c_str(), ZIP_RDONLY | ZIP_CHECKCONS, nullptr), zip_discard);
    if (!archive)
        qFatal("cannot unpack %s", package.c_str());
    fs::create_directory(to);
    std::vector<char> bytes(block);
    const zip_int64_t count = zip_get_num_entries(archive.get(), 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        const std::string name = zip_get_name(archive.get(), zip_uint64_t(i), ZIP_FL_ENC_RAW);
        if (name.back() == '/') // before what lies in it, as `zip` writes a package
            fs::create_directory(to / name);
        else
            unpackEntry(archive.get(), zip_uint64_t(i), to / name, &bytes);
    }
}

QString nameOf(const fs::path &path) {
    return QFile::decodeName(path.c_str());
}

void waitForDisk(const fs::path &folder) {
    if (!flushFolder(nameOf(folder)))
        qFatal("the disk was not waited for");
}

} // namespace

void bareApply(const Place &place) {
    const fs::path root = QFile::encodeName(place.root).toStdString();
    const fs::path copy = root / "copy.zip";
    copyFile(root / "line3.zip", copy);
    if (fileSha256Hex(nameOf(copy)).isEmpty())
        qFatal("no hash");
    unpack(copy, root / "staging");
    fs::remove(copy);
    copyFolder(root / "project", root / "backup");
    waitForDisk(root / "backup");
    waitForDisk(root / "staging");
    fs::remove_all(root / "project");
    fs::rename(root / "staging", root / "project");
    fs::remove_all(root / "backup");
}
