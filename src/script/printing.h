// How the printed forms walk a tree without recursion.
#pragma once

#include "script/printed_form.h"
#include "script/syntax_tree.h"

#include <QString>

#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace ast {

// What is left to print: a finished text, or a part of the tree.
using Part = std::variant<QString, const ExprNode *, const Stmt *, const Block *>;

// The parts of one node, in order.
class Parts {
public:
    Parts &text(const QString &text) {
        if (!content.empty() && std::holds_alternative<QString>(content.back()))
            std::get<QString>(content.back()) += text;
        else
            content.emplace_back(text);
        return *this;
    }
    Parts &text(const char *text) { return this->text(QString::fromLatin1(text)); }
    template<typename Node>
    Parts &node(const std::shared_ptr<Node> &node) {
        if constexpr (std::is_base_of_v<Stmt, Node>)
            content.emplace_back(static_cast<const Stmt *>(node.get()));
        else
            content.emplace_back(static_cast<const Node *>(node.get()));
        return *this;
    }
    // The parts behind `separator`, one for each entry of a list.
    template<typename List, typename Print>
    Parts &list(const List &entries, const char *separator, Print print) {
        bool isFirst = true;
        for (const auto &entry : entries) {
            if (!isFirst)
                text(separator);
            isFirst = false;
            print(entry);
        }
        return *this;
    }
    std::vector<Part> &parts() { return content; }

private:
    std::vector<Part> content;
};

// Gathers text, and hands it on in pieces that are worth a call.
class Pieces {
public:
    explicit Pieces(const TextSink &target)
        : sink(target) {}

    void add(const QString &text) {
        piece += text;
        if (piece.size() >= unitsOfPiece)
            handOn();
    }
    // After the last text.
    void handOn() {
        sink(piece);
        piece.resize(0);
    }

private:
    static constexpr int unitsOfPiece = 65536;

    const TextSink &sink;
    QString piece;
};

// Prints `first` and all below it. `Form::partsOf` gives the parts of a node, which may be null.
template<typename Form>
void print(Parts first, const TextSink &sink) {
    Pieces pieces(sink);
    std::vector<Part> left;
    const auto push = [&left](std::vector<Part> &parts) {
        left.insert(left.end(), std::make_move_iterator(parts.rbegin()),
                    std::make_move_iterator(parts.rend()));
    };
    push(first.parts());
    while (!left.empty()) {
        const Part part = std::move(left.back());
        left.pop_back();
        if (const auto *text = std::get_if<QString>(&part)) {
            pieces.add(*text);
            continue;
        }
        Parts parts;
        std::visit(
            [&parts](const auto &node) {
                if constexpr (!std::is_same_v<std::decay_t<decltype(node)>, QString>)
                    Form::partsOf(node, parts);
            },
            part);
        push(parts.parts());
    }
    pieces.handOn();
}

// All that `print` gives a sink, as one text.
template<typename Print>
QString gathered(Print print) {
    QString result;
    const TextSink sink = [&result](const QString &piece) { result += piece; };
    print(sink);
    return result;
}

template<typename Form>
QString printed(Parts first) {
    return gathered([&first](const TextSink &sink) { print<Form>(std::move(first), sink); });
}

} // namespace ast
