<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US" sourcelanguage="zh_CN">
<context>
    <name>LauncherWindow</name>
    <message>
        <source>启动</source>
        <translation>copy 0</translation>
    </message>
</context>
</TS>
