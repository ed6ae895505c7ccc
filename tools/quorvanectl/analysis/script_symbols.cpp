// Where names are declared is told by the tree; where they stand and where they are used by the tokens, since
// the tree keeps of most names the text alone.
#include "quorvanectl/analysis/script_symbols.h"

#include "quorvanectl/analysis/inner_statements.h"
#include "quorvanectl/analysis/script_summary.h"
#include "quorvanectl/analysis/token_places.h"
#include "script/syntax_tree.h"
#include "script/text_parser.h"
#include "update/files/memory_guard.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <utility>
#include <vector>

namespace ctl {
namespace {

bool isTypeWord(qint32 kind) {
    return kind >= ast::KwInt && kind <= ast::KwChar;
}

bool isCounting(qint32 kind) {
    return kind == ast::PlusPlus || kind == ast::MinusMinus;
}

// Tokens in which what is declared is known, both among them.
struct Scope {
    int first;
    int last;
};

struct Declared {
    ScriptName name;
    int lastToken = 0; // of a function
};

// What the tree declares, by the number of the token that names it, and the scopes that it makes.
class Declarations {
public:
    Declarations(const QString &filePath, const TokenPlaces &placesOfTokens)
        : file(filePath)
        , tokens(placesOfTokens) {}

    QHash<int, Declared> byToken;
    std::vector<Scope> scopes;
    QVector<NamedImport> imports;

    void take(const ast::Program &program) {
        std::vector<const ast::Stmt *> waiting;
        addInner(program, &waiting);
        while (!waiting.empty()) {
            const ast::Stmt *const statement = waiting.back();
            waiting.pop_back();
            addInner(*statement, &waiting);
            takeStatement(*statement);
        }
        for (int number = 0; number < tokens.count(); ++number) {
            if (tokens.kindOf(number) == ast::LBrace)
                scopes.push_back({number, tokens.closingBrace(number)});
        }
        std::sort(imports.begin(), imports.end(),
                  [](const NamedImport &one, const NamedImport &other) {
                      return one.at.from < other.at.from;
                  });
        // An outer one before those in it.
        std::sort(scopes.begin(), scopes.end(), [](const Scope &one, const Scope &other) {
            return std::make_pair(one.first, -one.last) < std::make_pair(other.first, -other.last);
        });
    }

private:
    void takeFunction(const ast::FunctionDeclStmt &function) {
        const int keyword = tokens.find(function.line, function.column);
        Declared declared;
        declared.name.kind = ScriptName::Kind::Function;
        declared.name.parameters = parametersOf(function);
        int next = keyword + 3; // behind the name and its parenthesis
        for (int i = 0; i < function.paramNames.size(); ++i) {
            next += int(isTypeWord(tokens.kindOf(next)));
            addVariable(next, ScriptName::Kind::Parameter, function.paramTypes.at(i));
            next += 2;
        }
        const int closing = tokens.closingParenthesis(keyword + 2);
        declared.lastToken = tokens.endOfBody(closing);
        declared.name.whole = {tokens.stretchOf(keyword).from,
                               tokens.stretchOf(declared.lastToken).to};
        scopes.push_back({keyword + 2, declared.lastToken});
        byToken.insert(keyword + 1, declared);
    }

    void takeStatement(const ast::Stmt &statement) {
        if (const auto *const variable = dynamic_cast<const ast::VarDeclStmt *>(&statement))
            takeVariable(tokens.find(variable->line, variable->column) + 1, *variable);
        else if (const auto *const loop = dynamic_cast<const ast::ForStmt *>(&statement))
            takeLoop(*loop);
        else if (const auto *const function =
                     dynamic_cast<const ast::FunctionDeclStmt *>(&statement))
            takeFunction(*function);
        else if (const auto *const import = dynamic_cast<const ast::ImportStmt *>(&statement))
            takeImport(*import);
    }

    // The positions of its first clause count from the clause, so the name is looked for behind "for", "(" and
    // the words before it.
    void takeLoop(const ast::ForStmt &loop) {
        const int keyword = tokens.find(loop.line, loop.column);
        const int closing = tokens.closingParenthesis(keyword + 1);
        scopes.push_back({keyword + 1, tokens.endOfBody(closing)});
        const auto *const variable = dynamic_cast<const ast::VarDeclStmt *>(loop.init.get());
        if (variable == nullptr)
            return;
        int next = keyword + 2;
        while (tokens.kindOf(next) == ast::Newline)
            ++next;
        const qint32 first = tokens.kindOf(next);
        takeVariable(next + (first == ast::KwStatic || first == ast::KwGlobal ? 2 : 1), *variable);
    }

    void takeVariable(int token, const ast::VarDeclStmt &variable) {
        if (tokens.at(token).text == variable.name)
            addVariable(token,
                        variable.isGlobal ? ScriptName::Kind::Global : ScriptName::Kind::Local,
                        variable.typeName);
    }

    void addVariable(int token, ScriptName::Kind kind, const QString &type) {
        Declared declared;
        declared.name.kind = kind;
        declared.name.type = type;
        declared.name.whole = tokens.stretchOf(token);
        byToken.insert(token, declared);
    }

    void takeImport(const ast::ImportStmt &import) {
        const int token = tokens.find(import.line, import.column);
        imports.append(
            {importedPath(file, import), tokens.at(token).text, tokens.stretchOf(token)});
    }

    const QString file;
    const TokenPlaces &tokens;
};

// Goes through the tokens once and finds for each name what it means there.
class Meanings {
public:
    Meanings(const TokenPlaces &placesOfTokens, const Declarations &found, int sizeOfText)
        : tokens(placesOfTokens)
        , declarations(found)
        , textSize(sizeOfText) {}

    ScriptSymbols symbols() {
        result.imports = declarations.imports;
        for (int number = 0; number < tokens.count(); ++number) {
            enterAndLeave(number);
            if (tokens.kindOf(number) == ast::Hash)
                number = endOfInclude(number);
            else if (tokens.kindOf(number) == ast::Identifier &&
                     tokens.kindOf(number - 1) != ast::Dot)
                takeName(number);
        }
        // What is known in the whole script may be declared behind its use.
        for (NameUse &use : result.uses) {
            if (use.meaning < 0)
                use.meaning = (use.isCall ? functions : variables).value(use.name, -1);
        }
        return result;
    }

private:
    struct OpenScope {
        int last;
        QStringList declared;
    };
    struct Local {
        int name;
        std::size_t depth;
    };

    void enterAndLeave(int number) {
        while (!open.empty() && open.back().last < number) {
            for (const QString &name : qAsConst(open.back().declared))
                locals[name].removeLast();
            open.pop_back();
        }
        const std::vector<Scope> &scopes = declarations.scopes;
        for (; nextScope < scopes.size() && scopes[nextScope].first == number; ++nextScope)
            open.push_back({scopes[nextScope].last, {}});
    }

    // A path in angles is made of tokens, none of which is a name.
    int endOfInclude(int number) const {
        if (tokens.kindOf(number + 1) != ast::KwInclude || tokens.kindOf(number + 2) != ast::Less)
            return number;
        int next = number + 2;
        while (next + 1 < tokens.count() && tokens.kindOf(next) != ast::Greater &&
               tokens.kindOf(next) != ast::Newline)
            ++next;
        return next;
    }

    void takeName(int number) {
        NameUse use;
        use.name = tokens.at(number).text;
        use.at = tokens.stretchOf(number);
        use.isCall = tokens.kindOf(number + 1) == ast::LParen;
        const auto declared = declarations.byToken.constFind(number);
        use.declares = declared != declarations.byToken.constEnd();
        use.writes = use.declares || tokens.kindOf(number + 1) == ast::Assign ||
                     isCounting(tokens.kindOf(number - 1)) || isCounting(tokens.kindOf(number + 1));
        if (use.declares)
            use.meaning = declare(*declared, use);
        else if (!use.isCall)
            use.meaning = innermost(use.name);
        result.uses.append(use);
    }

    // Gives the first of its name and scope.
    int declare(const Declared &declared, const NameUse &use) {
        ScriptName name = declared.name;
        name.name = use.name;
        name.at = use.at;
        name.visible = {0, textSize};
        const bool isFunction = name.kind == ScriptName::Kind::Function;
        const bool isOfAll = isFunction || name.kind == ScriptName::Kind::Global || open.empty();
        if (name.kind == ScriptName::Kind::Local && isOfAll)
            name.kind = ScriptName::Kind::Variable;
        if (!isOfAll)
            name.visible = {use.at.to, endOf(open.back().last)};
        const int number = result.names.size();
        result.names.append(name);
        if (!isOfAll)
            return declareLocal(name.name, number);
        QHash<QString, int> &known = isFunction ? functions : variables;
        if (!known.contains(name.name))
            known.insert(name.name, number);
        return known.value(name.name);
    }

    int declareLocal(const QString &name, int number) {
        QVector<Local> &known = locals[name];
        if (!known.isEmpty() && known.last().depth == open.size())
            return known.last().name;
        known.append({number, open.size()});
        open.back().declared.append(name);
        return number;
    }

    // A closing brace ends what is known before it.
    int endOf(int token) const {
        const Stretch last = tokens.stretchOf(token);
        return tokens.kindOf(token) == ast::RBrace ? last.from : last.to;
    }

    int innermost(const QString &name) const {
        const QVector<Local> known = locals.value(name);
        return known.isEmpty() ? -1 : known.last().name;
    }

    const TokenPlaces &tokens;
    const Declarations &declarations;
    const int textSize;
    std::vector<OpenScope> open;
    std::size_t nextScope = 0;
    QHash<QString, QVector<Local>> locals; // that are known at this token, the innermost last
    QHash<QString, int> functions;
    QHash<QString, int> variables; // of the whole script
    ScriptSymbols result;
};

} // namespace

ScriptSymbols symbolsOf(const QString &filePath, const QString &text, const ast::Program &program) {
    const TokenPlaces tokens(text);
    Declarations declarations(filePath, tokens);
    declarations.take(program);
    return Meanings(tokens, declarations, text.size()).symbols();
}

ScriptSymbols symbolsIn(const QString &filePath, const QString &text) {
    const auto read = [&] {
        const std::shared_ptr<ast::Program> program = ast::parseText(text).program;
        return program == nullptr ? ScriptSymbols() : symbolsOf(filePath, text, *program);
    };
    return text.size() > largestScript ? ScriptSymbols() : unlessOutOfMemory(read, ScriptSymbols());
}

QVector<int> namesKnownAt(const ScriptSymbols &symbols, int index) {
    QVector<int> known;
    for (int i = 0; i < symbols.names.size(); ++i) {
        if (touches(symbols.names.at(i).visible, index))
            known.append(i);
    }
    // What is known from a later place stands further in, or behind what it repeats.
    std::stable_sort(known.begin(), known.end(), [&symbols](int one, int other) {
        return symbols.names.at(one).visible.from > symbols.names.at(other).visible.from;
    });
    QSet<QPair<QString, bool>> seen;
    QVector<int> counting;
    for (const int name : qAsConst(known)) {
        const ScriptName &it = symbols.names.at(name);
        const QPair<QString, bool> key(it.name, it.kind == ScriptName::Kind::Function);
        if (seen.contains(key))
            continue;
        seen.insert(key);
        counting.append(name);
    }
    return counting;
}

} // namespace ctl
