// Tells what a program that lies where this one lies takes for its root.
#include "frame/app_paths.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    AppPaths::initialize();
    std::printf("root=%s\nlayout=%s\nuser=%s\n", qPrintable(AppPaths::repositoryRoot()),
                AppPaths::isRepositoryLayout() ? "repository" : "installation",
                qPrintable(AppPaths::userDirectory()));
    return 0;
}
