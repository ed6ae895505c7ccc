// What went wrong on the network, in an archive or in a folder.
#include "quorvanectl/log/known_lines.h"

#include <iterator>

namespace ctl {
namespace {

constexpr KnownLine networkRows[] = {
    {LineKind::Tells, "network request timed out", "",
     "The server did not answer within 3 seconds (the manifest) or 120 (a package).",
     "Check cable, proxy, firewall; update from a stick meanwhile.",
     "服务器在 3 秒（清单）或 120 秒（更新包）内没有应答。",
     "检查网线、代理和防火墙；在此期间用 U 盘更新。"},
    {LineKind::Tells, "empty response body (HTTP %1) from %2", "",
     "The server sent an empty answer.", "Look at the file on the server.",
     "服务器返回了空的内容。", "检查服务器上的文件。"},
    {LineKind::Tells, "response body too large for memory from %1", "",
     "The file is larger than memory.", "Check the address.", "文件大于内存。", "检查地址。"},
    {LineKind::Tells, "redirect (%1) missing Location header from %2", "",
     "The server's redirect leads nowhere.", "Tell whoever runs the server.",
     "服务器的重定向没有目标。", "告知服务器的管理人员。"},
    {LineKind::Tells, "too many redirects while requesting %1", "", "More than 8.",
     "Tell whoever runs the server.", "超过 8 次。", "告知服务器的管理人员。"},
    {LineKind::Tells, "invalid URL: %1", "", "The manifest holds no valid address.",
     "Tell the publisher.", "清单中的地址无效。", "告知发布方。"},
    {LineKind::Tells, "%1 HTTPS fallback failed for %2", "",
     "Both ways to download failed. `%1` is the second one.",
     "Check the date of the certificate and the clock of the PC, then the proxy.",
     "两种下载方式都失败，`%1` 是第二种。", "检查证书的日期和电脑的时钟，然后检查代理。"},
    {LineKind::Tells, "%1 HTTPS fallback timed out", "", "The second way did not answer in time.",
     "Check cable, proxy, firewall; update from a stick meanwhile.", "第二种方式没有按时应答。",
     "检查网线、代理和防火墙；在此期间用 U 盘更新。"},
    {LineKind::Tells, "%1 HTTPS fallback returned empty payload", "",
     "The second way brought an empty file.", "Look at the file on the server.",
     "第二种方式得到空文件。", "检查服务器上的文件。"},
    {LineKind::Tells, "unable to read HTTPS fallback file: %1", "",
     "Its file in the temporary folder vanished.", "Check a virus scanner.",
     "临时文件夹中的文件消失。", "检查杀毒软件。"},
};

constexpr KnownLine archiveRows[] = {
    {LineKind::Tells, "zip not found: %1", "", "The package vanished before it was unpacked.",
     "Leave the stick in; try again.", "解压之前更新包消失。", "保持 U 盘插入，然后再试。"},
    {LineKind::Tells, "zip extraction timed out", "", "Unpacking took more than 120 seconds.",
     "Check the disk and the virus scanner.", "解压超过 120 秒。", "检查磁盘和杀毒软件。"},
    {LineKind::Tells, "zip extraction failed with exit code %1", "",
     "The unpacker of the system failed and gave no reason.",
     "On Windows: is PowerShell allowed? Is there a quote in the path?",
     "系统的解压程序失败，没有给出原因。",
     "在 Windows 上：是否允许运行 PowerShell？路径中是否有引号？"},
    {LineKind::Tells, "unsafe zip entry: %1", "",
     "An entry would leave the folder. Nothing was unpacked.",
     "Tell the publisher; do not unpack it by hand.", "有条目会写到文件夹之外。没有解压任何内容。",
     "告知发布方；不要手动解压。"},
    {LineKind::Tells, "encrypted zip entry: %1", "", "The package has a password.",
     "Tell the publisher.", "更新包有密码。", "告知发布方。"},
    {LineKind::Tells, "Not a zip archive", "",
     "The file is not a zip archive, or its end is missing. Nothing was unpacked.",
     "Tell the publisher.", "不是 zip 压缩包，或缺少结尾。没有解压任何内容。", "告知发布方。"},
    {LineKind::Tells, "Zip archive inconsistent", "",
     "The package contradicts itself about an entry (name, size, method). Nothing was unpacked.",
     "Tell the publisher; do not unpack it by hand.",
     "更新包中关于某个条目的两处记录（名称、大小、压缩方式）不一致。没有解压任何内容。",
     "告知发布方；不要手动解压。"},
    {LineKind::Tells, "two zip entries of one name", "",
     "Two entries have the same name. Nothing was unpacked.", "Tell the publisher.",
     "有两个同名的条目。没有解压任何内容。", "告知发布方。"},
    {LineKind::Tells, "the zip archive's directory is too large", "",
     "More than 100,000 entries, or a directory made to take very long. Nothing was unpacked.",
     "Tell the publisher.", "条目超过 100,000 个，或目录被造成极其耗时。没有解压任何内容。",
     "告知发布方。"},
    {LineKind::Tells, "%1: the name is no UTF-8", "",
     "The name of an entry is not UTF-8, although the package says so. Nothing was unpacked.",
     "Tell the publisher.", "某个条目的名称不是 UTF-8，尽管更新包声明为 UTF-8。没有解压任何内容。",
     "告知发布方。"},
    {LineKind::Tells, "%1: the compression is not supported", "",
     "The entry is packed in a way that the launcher does not know. Nothing was unpacked.",
     "Tell the publisher.", "启动器不支持该条目的压缩方式。没有解压任何内容。", "告知发布方。"},
    {LineKind::Tells, "%1: a folder cannot have content", "",
     "An entry is named as a folder and has content. Nothing was unpacked.", "Tell the publisher.",
     "条目的名称是文件夹，却带有内容。没有解压任何内容。", "告知发布方。"},
    {LineKind::Tells, "%1: CRC error", "", "The entry's content is damaged.", "Tell the publisher.",
     "条目的内容已损坏。", "告知发布方。"},
    {LineKind::Tells, "unable to write file: %1 (%2)", "", "An unpacked file could not be written.",
     "Make room; check rights.", "解压出的文件无法写入。", "腾出空间；检查权限。"},
    {LineKind::Tells, "unable to create directory: %1", "", "A folder could not be made.",
     "Make room; check rights.", "无法建立文件夹。", "腾出空间；检查权限。"},
    {LineKind::Tells, "unable to create destination directory: %1", "",
     "A folder could not be made.", "Make room; check rights.", "无法建立文件夹。",
     "腾出空间；检查权限。"},
    {LineKind::Tells, "not a regular file", "",
     "There is a pipe or a device instead of a file. It is not opened.",
     "Find out who put it there.", "本应是文件的位置是管道或设备，不会打开它。",
     "查明是谁放在那里的。"},
    {LineKind::Tells, "unable to copy file: %1", "",
     "A file could not be copied, or a folder not be listed while it was copied.",
     "Close what has it open; check rights and room.", "文件无法复制，或复制时无法列出文件夹。",
     "关闭占用它的程序；检查权限和空间。"},
    {LineKind::Tells, "unable to replace file: %1", "", "A file is in use.",
     "Close what has it open.", "文件正在使用。", "关闭占用它的程序。"},
    {LineKind::Tells, "unable to remove directory: %1", "",
     "A file in it is in use, a program in it runs, a right is missing, or the folder may not be "
     "replaced (the root of a volume; a folder that holds the launcher, by whatever name it goes).",
     "Close what has it open; move the project to a folder of its own.",
     "其中有文件正在使用、有程序正在运行、缺少权限，或者该文件夹不可替换（卷的根目录；或包含启动器"
     "的文件夹，无论用哪个名称指向它）。",
     "关闭占用它的程序；把项目移到单独的文件夹。"},
    {LineKind::Tells, "source directory not found: %1", "",
     "`logs` in the project is a file, or a folder vanished.", "Rename that file.",
     "项目中的 `logs` 是文件，或某个文件夹消失。", "重命名该文件。"},
    {LineKind::Tells, "staging directory not found: %1", "", "The unpacked package vanished.",
     "Check a virus scanner; try again.", "解压出的更新包消失。", "检查杀毒软件，然后再试。"},
    {LineKind::Tells, "backup source not found: %1", "", "The project vanished meanwhile.",
     "Find out who moved it.", "项目在此期间消失。", "查明是谁移走的。"},
    {LineKind::Tells, "backup directory not found: %1", "", "There is no backup to put back.",
     "See \"A project update that was interrupted\".", "没有可以恢复的备份。",
     "见“更新中断之后的项目”。"},
};

} // namespace

KnownTable networkTable() {
    return {TableKind::InnerTexts, "The network", networkRows, int(std::size(networkRows))};
}

KnownTable archiveTable() {
    return {TableKind::InnerTexts, "Archives and folders", archiveRows,
            int(std::size(archiveRows))};
}

} // namespace ctl
