; What is said, in the language of the system; English where it is neither. $4 is a name from the report.
LoadLanguageFile "${NSISDIR}\Contrib\Language files\English.nlf"
LoadLanguageFile "${NSISDIR}\Contrib\Language files\SimpChinese.nlf"

!macro Text name english chinese
    LangString ${name} 1033 "${english}"
    LangString ${name} 2052 "${chinese}"
!macroend

!insertmacro Text where \
    "Quorvaner ${VERSION} will be installed here. The line may go on running: the new version starts the next time." \
    "Quorvaner ${VERSION} 将安装到此处。产线可以继续运行，新版本在下次启动时生效。"
!insertmacro Text alreadyOpen \
    "The installer is open already." \
    "安装程序已经打开。"
!insertmacro Text tooLong \
    "The name of this folder is too long. Choose one nearer to the top of the drive, D:\Quorvaner for example." \
    "文件夹路径过长。请选择更靠近盘符根目录的位置，例如 D:\Quorvaner。"
!insertmacro Text notAllowed \
    "You may not write to $INSTDIR. Nothing was changed. Ask whoever looks after this PC, or choose another folder." \
    "没有写入 $INSTDIR 的权限，未作任何更改。请联系设备管理人员，或选择其他文件夹。"
!insertmacro Text notUnpacked \
    "The new files could not be written. Is the disk full? Nothing was changed; what is installed stays in use." \
    "无法写入新文件，磁盘可能已满。未作任何更改，将继续使用当前版本。"
!insertmacro Text nothingChanged \
    "Nothing was changed; what is installed stays in use. Try again, and give this text to support:" \
    "未作任何更改，将继续使用当前版本。请重试，并将以下内容提供给技术支持："
!insertmacro Text unfinished \
    "The installation is not finished. Start this installer again; restarting the PC does it too." \
    "安装尚未完成。请再次运行此安装程序，或重新启动电脑。"
!insertmacro Text installed \
    "Quorvaner ${VERSION} is installed. It starts the next time the launcher is started." \
    "Quorvaner ${VERSION} 已安装，下次启动启动器时生效。"
!insertmacro Text laidBeside \
    "$4 was changed here and stays in use. The new one lies beside it: $4.new" \
    "$4 已在本机修改，将继续使用。新文件放在旁边：$4.new"
!insertmacro Text setAside \
    "release_version.json could not be read. It was kept as $4, and a new one was written. Tell support: versions of other components may be unknown now." \
    "无法读取 release_version.json，原文件保留为 $4，并已写入新文件。请告知技术支持：其他组件的版本可能显示为未知。"
!insertmacro Text otherKey \
    "This installation trusts another publisher's key than this installer brings. It was left as it is: update.pub" \
    "本机信任的发布者密钥与此安装程序自带的不同，已保持不变：update.pub"
!insertmacro Text leftBehind \
    "Was changed here and stays: $4" \
    "已在本机修改，予以保留：$4"
!insertmacro Text removeIt \
    "Remove Quorvaner from $INSTDIR? Projects and settings in USER stay." \
    "要从 $INSTDIR 卸载 Quorvaner 吗？USER 中的项目和设置会保留。"
!insertmacro Text removed \
    "Quorvaner was removed from $INSTDIR." \
    "已从 $INSTDIR 卸载 Quorvaner。"
!insertmacro Text notRemoved \
    "Quorvaner was not removed:" \
    "未卸载 Quorvaner："
!insertmacro Text notHere \
    "There is no complete installation of Quorvaner in $INSTDIR. Nothing was removed." \
    "$INSTDIR 中没有完整的 Quorvaner 安装，未删除任何内容。"
