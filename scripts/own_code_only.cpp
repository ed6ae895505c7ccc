// Loaded into clang-tidy by scripts/tidy. Its checks look at every declaration of a source file, and nine
// in ten of those are Qt's and the standard library's, whose findings are then thrown away: half of the
// time goes there. This leaves them only what stands in no system header. The static analyser has a list
// of its own and is not touched.
//
// It also writes down which files were read, to the one that QUORVANE_TIDY_READ names.
//
// The interface is that of plug-ins in the manual "Clang Plugins"; TraversalScope is what clangd sets for
// the same purpose.
#include <clang/AST/ASTConsumer.h>
#include <clang/AST/ASTContext.h>
#include <clang/Basic/SourceManager.h>
#include <clang/Frontend/CompilerInstance.h>
#include <clang/Frontend/FrontendPluginRegistry.h>

#include <cstdlib>
#include <fstream>

namespace {

// One to a line, as the compiler found them.
void tellFiles(const clang::SourceManager &files) {
    const char *place = std::getenv("QUORVANE_TIDY_READ");
    if (place == nullptr)
        return;
    std::ofstream told(place);
    for (auto file = files.fileinfo_begin(); file != files.fileinfo_end(); ++file)
        told << file->first->getName().str() << '\n';
}

class OwnCodeOnly : public clang::ASTConsumer {
public:
    void HandleTranslationUnit(clang::ASTContext &context) override {
        const clang::SourceManager &files = context.getSourceManager();
        std::vector<clang::Decl *> own;
        for (clang::Decl *declaration : context.getTranslationUnitDecl()->decls()) {
            if (!files.isInSystemHeader(files.getExpansionLoc(declaration->getLocation())))
                own.push_back(declaration);
        }
        context.setTraversalScope(own);
        tellFiles(files);
    }
};

class Action : public clang::PluginASTAction {
    std::unique_ptr<clang::ASTConsumer> CreateASTConsumer(clang::CompilerInstance &,
                                                          llvm::StringRef) override {
        return std::make_unique<OwnCodeOnly>();
    }
    bool ParseArgs(const clang::CompilerInstance &, const std::vector<std::string> &) override {
        return true;
    }
    ActionType getActionType() override { return AddBeforeMainAction; }
};

const clang::FrontendPluginRegistry::Add<Action>
    registration("own-code-only", "leaves checks only what stands in no system header");

} // namespace
