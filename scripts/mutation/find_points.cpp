// Loaded into clang by scripts/mutate: finds where a source file could be changed in a small way, and how.
//
// Each change becomes one line of JSON on standard output: its operator, line and column, what stands
// there and what would, and the edits, each of two places and of what is put before the first and behind
// the second. CHOSEN stands for the question whether that change is the chosen one. What is there stays
// between the edits, so that changes can lie within each other.
//
// Left alone: macros but for QStringLiteral, and what has to be known when the program is compiled.
#include <clang/AST/ASTConsumer.h>
#include <clang/AST/ASTContext.h>
#include <clang/AST/RecursiveASTVisitor.h>
#include <clang/Frontend/CompilerInstance.h>
#include <clang/Frontend/FrontendPluginRegistry.h>
#include <clang/Lex/Lexer.h>
#include <clang/Lex/PPCallbacks.h>
#include <clang/Lex/Preprocessor.h>
#include <llvm/Support/JSON.h>

#include <set>

namespace {

using clang::BinaryOperatorKind;
using clang::CharSourceRange;
using clang::Expr;
using clang::SourceLocation;
using clang::SourceRange;
using clang::Stmt;

// A piece of the file that is being compiled, in bytes.
struct Piece {
    unsigned begin = 0;
    unsigned end = 0;
    std::string text;
    explicit operator bool() const { return end > begin; }
};

class Points {
public:
    explicit Points(clang::CompilerInstance &compiler)
        : compiler(compiler) {}

    // None where a part of it comes out of a macro or of another file.
    [[nodiscard]] Piece piece(SourceRange range) const {
        if (range.getBegin().isMacroID() || range.getEnd().isMacroID())
            return {};
        return piece(CharSourceRange::getTokenRange(range));
    }

    [[nodiscard]] Piece piece(CharSourceRange range) const {
        const clang::SourceManager &files = compiler.getSourceManager();
        const auto characters = clang::Lexer::getAsCharRange(range, files, compiler.getLangOpts());
        if (characters.isInvalid() ||
            files.getFileID(characters.getBegin()) != files.getMainFileID())
            return {};
        return {files.getFileOffset(characters.getBegin()),
                files.getFileOffset(characters.getEnd()),
                clang::Lexer::getSourceText(characters, files, compiler.getLangOpts()).str()};
    }

    // In place of an expression, another one.
    void replace(llvm::StringRef name, const Piece &at, const std::string &now) const {
        if (at)
            tell(name, at, now, llvm::json::Array{edit(at, "(CHOSEN ? (" + now + ") : (", "))")});
    }

    // A condition may be anything that can be taken for a bool.
    void settle(llvm::StringRef name, const Piece &at, const std::string &now) const {
        if (at)
            tell(name, at, now,
                 llvm::json::Array{edit(at, "(CHOSEN ? bool(" + now + ") : bool(", "))")});
    }

    void drop(llvm::StringRef name, const Piece &at) const {
        if (at)
            tell(name, at, "",
                 llvm::json::Array{edit(at, "(CHOSEN ? void() : static_cast<void>(", "))")});
    }

    void swap(llvm::StringRef name, const Piece &first, const Piece &second) const {
        if (!first || !second)
            return;
        Piece both = first;
        both.text += "; " + second.text;
        const auto instead = [](const Piece &other) {
            return "(CHOSEN ? static_cast<void>(" + other.text + ") : static_cast<void>(";
        };
        tell(name, both, second.text + "; " + first.text,
             llvm::json::Array{edit(first, instead(second), "))"),
                               edit(second, instead(first), "))")});
    }

private:
    static llvm::json::Value edit(const Piece &at, const std::string &before,
                                  const std::string &behind) {
        return llvm::json::Array{at.begin, at.end, llvm::json::fixUTF8(before), behind};
    }

    void tell(llvm::StringRef name, const Piece &at, const std::string &now,
              llvm::json::Array edits) const {
        const clang::SourceManager &files = compiler.getSourceManager();
        const clang::FileID file = files.getMainFileID();
        llvm::json::Object point{{"operator", name},
                                 {"line", files.getLineNumber(file, at.begin)},
                                 {"column", files.getColumnNumber(file, at.begin)},
                                 {"was", llvm::json::fixUTF8(at.text)},
                                 {"now", llvm::json::fixUTF8(now)},
                                 {"edits", std::move(edits)}};
        llvm::outs() << llvm::json::Value(std::move(point)) << '\n';
    }

    clang::CompilerInstance &compiler;
};

const Expr *bare(const Stmt *statement) {
    const auto *expression = llvm::dyn_cast_or_null<Expr>(statement);
    return expression != nullptr ? expression->IgnoreUnlessSpelledInSource() : nullptr;
}

bool isPlainCall(const Expr *expression) {
    return expression != nullptr && llvm::isa<clang::CallExpr>(expression) &&
           !llvm::isa<clang::CXXOperatorCallExpr>(expression);
}

class Visitor : public clang::RecursiveASTVisitor<Visitor> {
public:
    explicit Visitor(const Points &points)
        : points(points) {}

    // --- What has to be known when the program is compiled ---------------------------------------

    bool TraverseVarDecl(clang::VarDecl *variable) {
        return variable->isConstexpr() || RecursiveASTVisitor::TraverseVarDecl(variable);
    }
    bool TraverseFunctionDecl(clang::FunctionDecl *function) {
        return function->isConstexpr() || RecursiveASTVisitor::TraverseFunctionDecl(function);
    }
    bool TraverseCXXMethodDecl(clang::CXXMethodDecl *method) {
        // A lambda's is constexpr where it can be, and loses nothing when it cannot.
        return method->isConstexprSpecified() || RecursiveASTVisitor::TraverseCXXMethodDecl(method);
    }
    bool TraverseCXXConstructorDecl(clang::CXXConstructorDecl *constructor) {
        return constructor->isConstexprSpecified() ||
               RecursiveASTVisitor::TraverseCXXConstructorDecl(constructor);
    }
    bool TraverseStaticAssertDecl(clang::StaticAssertDecl *) { return true; }
    bool TraverseEnumConstantDecl(clang::EnumConstantDecl *) { return true; }
    bool TraverseTemplateArgumentLoc(const clang::TemplateArgumentLoc &) { return true; }
    bool TraverseConstantArrayTypeLoc(clang::ConstantArrayTypeLoc) { return true; }
    bool TraverseCaseStmt(clang::CaseStmt *label) { return TraverseStmt(label->getSubStmt()); }

    // --- Statements ----------------------------------------------------------------------------

    bool VisitCompoundStmt(clang::CompoundStmt *block) {
        const Expr *last = nullptr;
        for (const Stmt *statement : block->body()) {
            lookAtStatement(statement);
            const Expr *call = bare(statement);
            if (!isPlainCall(call))
                call = nullptr;
            if (last != nullptr && call != nullptr)
                points.swap("swapped calls", pieceOf(last), pieceOf(call));
            last = call;
        }
        return true;
    }
    bool VisitIfStmt(clang::IfStmt *branch) {
        lookAtStatement(branch->getThen());
        lookAtStatement(branch->getElse());
        if (!branch->isConstexpr() && !branch->hasVarStorage())
            lookAtCondition(branch->getCond(), true);
        return true;
    }
    bool VisitForStmt(clang::ForStmt *loop) {
        lookAtStatement(loop->getBody());
        lookAtCondition(loop->getCond(), false);
        if (loop->getInc() != nullptr)
            discarded.insert(bare(loop->getInc()));
        return true;
    }
    bool VisitCXXForRangeStmt(clang::CXXForRangeStmt *loop) {
        lookAtStatement(loop->getBody());
        return true;
    }
    bool VisitWhileStmt(clang::WhileStmt *loop) {
        lookAtStatement(loop->getBody());
        if (loop->getConditionVariable() == nullptr)
            lookAtCondition(loop->getCond(), false);
        return true;
    }
    bool VisitDoStmt(clang::DoStmt *loop) {
        lookAtStatement(loop->getBody());
        lookAtCondition(loop->getCond(), false);
        return true;
    }

    // --- Expressions -----------------------------------------------------------------------------

    bool VisitBinaryOperator(clang::BinaryOperator *operation) {
        if (operation->isTypeDependent())
            return true;
        if (operation->isComparisonOp())
            compare(operation, operation->getOpcode(), operation->getOperatorLoc());
        if (operation->isLogicalOp()) {
            const Piece whole = pieceOf(operation);
            for (const Expr *kept : {operation->getRHS(), operation->getLHS()}) {
                const Piece rest = pieceOf(kept);
                if (rest)
                    points.settle("dropped condition", whole, rest.text);
            }
        }
        return true;
    }
    bool VisitConditionalOperator(clang::ConditionalOperator *choice) {
        lookAtCondition(choice->getCond(), true);
        return true;
    }
    bool VisitCallExpr(clang::CallExpr *call) {
        if (call->isTypeDependent())
            return true;
        if (const auto *named = llvm::dyn_cast<clang::CXXOperatorCallExpr>(call)) {
            if (named->isComparisonOp() && named->getNumArgs() == 2)
                compare(named, clang::BinaryOperator::getOverloadedOpcode(named->getOperator()),
                        named->getOperatorLoc());
            return true;
        }
        const bool isBool = call->getType()->isBooleanType() && call->isPRValue();
        if (!isBool || discarded.count(call) != 0)
            return true;
        const Piece at = pieceOf(call);
        for (const char *answer : {"true", "false"})
            points.replace("ignored result", at, "static_cast<void>(" + at.text + "), " + answer);
        return true;
    }
    bool VisitIntegerLiteral(clang::IntegerLiteral *number) {
        const Piece at = pieceOf(number);
        points.replace("off by one", at, at.text + " + 1");
        points.replace("off by one", at, at.text + " - 1");
        return true;
    }
    bool VisitDeclRefExpr(clang::DeclRefExpr *use) {
        const auto *named = llvm::dyn_cast<clang::VarDecl>(use->getDecl());
        if (named != nullptr && named->isConstexpr() && named->getType()->isIntegerType() &&
            !named->getType()->isBooleanType()) {
            const Piece at = pieceOf(use);
            points.replace("off by one", at, at.text + " + 1");
        }
        return true;
    }
    bool VisitImplicitCastExpr(clang::ImplicitCastExpr *cast) {
        if (cast->getCastKind() == clang::CK_ArrayToPointerDecay)
            if (const auto *text = llvm::dyn_cast<clang::StringLiteral>(cast->getSubExpr())) {
                const Piece at = pieceOf(text);
                points.replace("changed text", at, at.text + " \"~\"");
            }
        return true;
    }
    bool VisitCharacterLiteral(clang::CharacterLiteral *character) {
        const Piece at = pieceOf(character);
        points.replace("changed text", at, "decltype(" + at.text + ")(" + at.text + " + 1)");
        return true;
    }

private:
    [[nodiscard]] Piece pieceOf(const Expr *expression) const {
        return points.piece(expression->getSourceRange());
    }

    void lookAtStatement(const Stmt *statement) {
        const Expr *call = bare(statement);
        if (call == nullptr)
            return;
        discarded.insert(call);
        if (isPlainCall(call) && !call->isTypeDependent())
            points.drop("dropped call", pieceOf(call));
    }

    void lookAtCondition(const Expr *condition, bool mayHold) {
        if (condition == nullptr || condition->isTypeDependent())
            return;
        const Piece at = pieceOf(condition);
        if (mayHold)
            points.settle("dropped condition", at, "true");
        points.settle("dropped condition", at, "false");
    }

    void compare(const Expr *whole, BinaryOperatorKind kind, SourceLocation sign) {
        const Piece at = pieceOf(whole);
        const Piece middle = points.piece(SourceRange(sign, sign));
        if (!at || !middle || !whole->getType()->isBooleanType())
            return;
        const char *shifted = nullptr;
        switch (kind) {
        case clang::BO_LT:
            shifted = "<=";
            break;
        case clang::BO_LE:
            shifted = "<";
            break;
        case clang::BO_GT:
            shifted = ">=";
            break;
        case clang::BO_GE:
            shifted = ">";
            break;
        default:
            break;
        }
        if (shifted != nullptr)
            points.replace("comparison", at,
                           at.text.substr(0, middle.begin - at.begin) + shifted +
                               at.text.substr(middle.end - at.begin));
        points.replace("comparison", at, "!(" + at.text + ")");
    }

    const Points &points;
    std::set<const Expr *> discarded; // whose value nobody takes
};

// QStringLiteral's text stands in it twice; its use is one.
class TextMacros : public clang::PPCallbacks {
public:
    explicit TextMacros(const Points &points)
        : points(points) {}

    void MacroExpands(const clang::Token &name, const clang::MacroDefinition &, SourceRange range,
                      const clang::MacroArgs *) override {
        if (name.getIdentifierInfo()->getName() != "QStringLiteral")
            return;
        const Piece at = points.piece(range);
        if (at)
            points.replace("changed text", at, at.text.substr(0, at.text.rfind(')')) + " \"~\")");
    }

private:
    const Points &points;
};

class Consumer : public clang::ASTConsumer {
public:
    explicit Consumer(clang::CompilerInstance &compiler)
        : points(compiler) {
        compiler.getPreprocessor().addPPCallbacks(std::make_unique<TextMacros>(points));
    }
    void HandleTranslationUnit(clang::ASTContext &context) override {
        const clang::SourceManager &files = context.getSourceManager();
        Visitor visitor(points);
        for (clang::Decl *declaration : context.getTranslationUnitDecl()->decls())
            if (files.isInMainFile(files.getExpansionLoc(declaration->getLocation())))
                visitor.TraverseDecl(declaration);
    }

private:
    Points points;
};

class Action : public clang::PluginASTAction {
    std::unique_ptr<clang::ASTConsumer> CreateASTConsumer(clang::CompilerInstance &compiler,
                                                          llvm::StringRef) override {
        return std::make_unique<Consumer>(compiler);
    }
    bool ParseArgs(const clang::CompilerInstance &, const std::vector<std::string> &) override {
        return true;
    }
    ActionType getActionType() override { return ReplaceAction; }
};

const clang::FrontendPluginRegistry::Add<Action>
    registration("find-points", "lists the small changes that a source file could have");

} // namespace
