// The server as it is shipped, spoken to by the protocol's own library: what it answers on the demo project, and
// that every message it sends has the type that the protocol gives it.
import assert from 'node:assert/strict';
import { cpSync, mkdtempSync, readFileSync, realpathSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, afterEach, test as unlimited } from 'node:test';
import {
    CancellationTokenSource, ClientCapabilities, CompletionItem, CompletionItemKind, CompletionList,
    CompletionRequest, DefinitionRequest, Diagnostic, DiagnosticSeverity, DidChangeTextDocumentNotification,
    DidChangeWatchedFilesNotification, DidSaveTextDocumentNotification, DocumentHighlight, DocumentHighlightKind,
    DocumentHighlightRequest, DocumentSymbol, DocumentSymbolRequest, ErrorCodes, FileChangeType, FoldingRange,
    FoldingRangeKind, FoldingRangeRequest, Hover, HoverRequest, InitializeResult, InsertTextFormat, Location,
    LSPErrorCodes, MarkupKind, ParameterInformation, Position, PositionEncodingKind, PrepareRenameRequest,
    Range, ReferencesRequest,
    RenameRequest, ResponseError, SemanticTokens, SemanticTokensRequest, ShutdownRequest, SignatureHelp,
    SignatureHelpRequest, SymbolInformation, SymbolKind, TextDocumentContentChangeEvent,
    TextDocumentSyncKind, TokenFormat, WorkDoneProgress, WorkDoneProgressBegin, WorkDoneProgressEnd,
    WorkDoneProgressReport, WorkspaceEdit,
} from 'vscode-languageserver-protocol/node';
import { Editor, everythingSaid, uriOf } from './editor';
import { faultsOf } from './message_types';

// --- the project -------------------------------------------------------------------------------

const folder = realpathSync(mkdtempSync(join(tmpdir(), 'quorvane-protocol-')));
after(() => rmSync(folder, { recursive: true }));
afterEach(() => Editor.endAll());
cpSync(process.env.PROJECT!, folder, { recursive: true });

const uriIn = (name: string) => uriOf(join(folder, name));
const textIn = (name: string) => readFileSync(join(folder, name), 'utf8');
const capScript = 'scripts/cap_inspection.ys';
const cap = uriIn(capScript), capText = textIn(capScript);
const main = uriIn('scripts/main.ys');
const limits = uriIn('scripts/limits.ys');
const labelUri = uriIn('scripts/label_inspection.ys');
const projectFile = uriIn('demo.yslib');

// The n-th place of a text in another, and the range that it takes there.
function placeOf(text: string, name = capScript, skipped = 0): Position {
    const whole = textIn(name);
    let at = whole.indexOf(text);
    for (; skipped > 0; --skipped)
        at = whole.indexOf(text, at + 1);
    assert.notEqual(at, -1, `no ${text} in ${name}`);
    const before = whole.slice(0, at).split('\n');
    return Position.create(before.length - 1, before.at(-1)!.length);
}

function rangeOf(text: string, name = capScript, skipped = 0): Range {
    const { line, character } = placeOf(text, name, skipped);
    return Range.create(line, character, line, character + text.length);
}

// --- a conversation ----------------------------------------------------------------------------

const everything: ClientCapabilities = {
    general: { positionEncodings: [PositionEncodingKind.UTF16] },
    window: { workDoneProgress: true },
    workspace: { didChangeWatchedFiles: { dynamicRegistration: true } },
    textDocument: {
        publishDiagnostics: { relatedInformation: true },
        completion: { completionItem: { snippetSupport: true } },
        hover: { contentFormat: [MarkupKind.Markdown, MarkupKind.PlainText] },
        signatureHelp: { signatureInformation: { parameterInformation: { labelOffsetSupport: true } } },
        documentSymbol: { hierarchicalDocumentSymbolSupport: true },
        rename: { prepareSupport: true },
    },
};

// With the script of the first camera open, whatever the project says of it told.
async function atWork(capabilities: ClientCapabilities = everything): Promise<Editor> {
    const [editor] = await Editor.withAbilities(capabilities);
    await editor.open(cap, capText);
    return editor;
}

function change(editor: Editor, version: number, ...contentChanges: TextDocumentContentChangeEvent[]) {
    return editor.connection.sendNotification(
        DidChangeTextDocumentNotification.type, { textDocument: { uri: cap, version }, contentChanges });
}

const at = (position: Position, uri = cap) => ({ textDocument: { uri }, position });

async function refused(answer: Promise<unknown>, code: number, message: string) {
    await assert.rejects(answer, (error: ResponseError<unknown>) => {
        assert.deepEqual([error.code, error.message], [code, message]);
        return true;
    });
}

// What never comes is a failure of the test that waits for it.
function test(name: string, body: () => unknown) {
    unlimited(name, { timeout: 120000 }, body as () => Promise<void>);
}

// --- the beginning and the end -----------------------------------------------------------------

test('what the server can do', async () => {
    const [editor, greeting] = await Editor.withAbilities(everything);
    const expected: InitializeResult = {
        capabilities: {
            positionEncoding: PositionEncodingKind.UTF16,
            textDocumentSync: { openClose: true, change: TextDocumentSyncKind.Incremental, save: true },
            completionProvider: { triggerCharacters: ['"'] },
            hoverProvider: true,
            signatureHelpProvider: { triggerCharacters: ['(', ','] },
            definitionProvider: true,
            referencesProvider: true,
            documentHighlightProvider: true,
            documentSymbolProvider: true,
            foldingRangeProvider: true,
            renameProvider: { prepareProvider: true },
            semanticTokensProvider: {
                legend: {
                    tokenTypes: ['keyword', 'type', 'function', 'variable', 'property', 'number', 'string',
                        'operator', 'comment'],
                    tokenModifiers: [],
                },
                full: true,
            },
        },
        serverInfo: { name: 'quorvanectl', version: process.env.VERSION! },
    };
    assert.deepEqual(greeting, expected);
    assert.equal(await editor.quit(), 0);
});

for (const [offered, chosen] of [
    [undefined, 'utf-16'], [[], 'utf-16'], [['utf-16'], 'utf-16'], [['utf-8', 'utf-16'], 'utf-8'],
    [['utf-16', 'utf-8'], 'utf-16'], [['utf-32', 'utf-8', 'utf-16'], 'utf-8'], [['utf-32'], 'utf-16'],
] as const) {
    test(`an editor that offers ${offered ? `[${offered}]` : 'nothing'} gets ${chosen}`, async () => {
        const [editor, greeting] = await Editor.withAbilities(
            { general: offered && { positionEncodings: [...offered] } });
        assert.equal(greeting.capabilities.positionEncoding, chosen);
        assert.equal(await editor.quit(), 0);
    });
}

test('nothing is answered before initialize and behind shutdown', async () => {
    const editor = new Editor();
    await refused(editor.connection.sendRequest(HoverRequest.type, at(Position.create(0, 0))),
        ErrorCodes.ServerNotInitialized, 'initialize comes first');
    assert.equal(await editor.exit(), 1);
    const [other] = await Editor.withAbilities({});
    await other.connection.sendRequest(ShutdownRequest.type);
    await refused(other.connection.sendRequest(HoverRequest.type, at(Position.create(0, 0))),
        ErrorCodes.InvalidRequest, 'the server is shut down');
    assert.equal(await other.exit(), 0);
});

test('an exit without shutdown, and an editor that is gone, give another exit status', async () => {
    const [leaving] = await Editor.withAbilities({});
    assert.equal(await leaving.exit(), 1);
    const [gone] = await Editor.withAbilities({});
    gone.vanish();
    assert.equal(await gone.status(), 1);
});

test('an unknown request is refused, an unknown notification passed over', async () => {
    const editor = await atWork();
    await refused(editor.connection.sendRequest('textDocument/colours', {}), ErrorCodes.MethodNotFound,
        'no method textDocument/colours');
    await editor.connection.sendNotification('textDocument/colours', {});
    await editor.connection.sendNotification('$/colours', {});
    await refused(editor.connection.sendRequest(HoverRequest.type, at(Position.create(0, 0), main)),
        ErrorCodes.InvalidParams, `the text is not open: ${join(folder, 'scripts/main.ys')}`);
    assert.equal(await editor.quit(), 0);
});

// Which of them have been answered before their cancellation comes is a matter of speed: the first is late for
// sure, since it waits for a long text.
test('each cancelled request has one answer', async () => {
    const editor = await atWork();
    await editor.open(uriIn('scripts/long.ys'), 'print("a")\n'.repeat(50000));
    const answers = Array.from({ length: 20 }, () => {
        const source = new CancellationTokenSource();
        const answer = editor.connection.sendRequest(DocumentSymbolRequest.type, { textDocument: { uri: cap } },
            source.token);
        source.cancel();
        return answer.then(() => 'an answer', (error: ResponseError<unknown>) => `${error.code} ${error.message}`);
    });
    const told = new Set(await Promise.all(answers));
    told.delete('an answer');
    assert.deepEqual([...told], [`${LSPErrorCodes.RequestCancelled} cancelled`]);
    assert.equal(await editor.quit(), 0);
});

// --- texts and findings ------------------------------------------------------------------------

const unknownSign = (line: number, character: number): Diagnostic => ({
    range: Range.create(line, character, line, character + 1), severity: DiagnosticSeverity.Error, code: 'YS100',
    source: 'quorvane', message: '无法识别的字符',
});

// The sign behind `"𝄞" `: a pair of units in UTF-16, four bytes in UTF-8.
for (const [encoding, column] of [['utf-16', 5], ['utf-8', 7]] as const) {
    test(`a mistake appears and goes, by stretches and whole texts, in ${encoding}`, async () => {
        const editor = await atWork({ general: { positionEncodings: [encoding, 'utf-16'] } });
        const line = capText.split('\n').length - 1;
        await change(editor, 2, { range: Range.create(line, 0, line, 0), text: '"𝄞" $' });
        const told = await editor.findings(cap, 1, 2);
        assert.ok(told.diagnostics.every(Diagnostic.is));
        assert.deepEqual(told, { uri: cap, version: 2, diagnostics: [unknownSign(line, column)] });
        await change(editor, 3, { range: Range.create(line, column, line, column + 1), text: '' });
        await editor.findings(cap, 0, 3);
        await change(editor, 4, { text: '$' });
        assert.deepEqual((await editor.findings(cap, 1, 4)).diagnostics, [unknownSign(0, 0)]);
        await change(editor, 5, { text: '' }, { range: Range.create(0, 0, 0, 0), text: capText });
        await editor.findings(cap, 0, 5);
        await change(editor, 6, { text: '$' });
        await editor.findings(cap, 1, 6);
        await editor.close(cap);
        assert.deepEqual(await editor.findings(cap, 0), { uri: cap, diagnostics: [] });
        assert.equal(await editor.quit(), 0);
    });
}

for (const related of [true, false]) {
    test(`a global of two scripts is told ${related ? 'with' : 'without'} the other place`, async () => {
        const editor = await atWork(
            { textDocument: { publishDiagnostics: { relatedInformation: related } } });
        await editor.open(labelUri, textIn('scripts/label_inspection.ys') + 'global int cam1_verdict = 0\n');
        const told = (await editor.findings(cap, 1)).diagnostics;
        assert.ok(told.every(Diagnostic.is));
        const lines = textIn('scripts/label_inspection.ys').split('\n').length - 1;
        const expected: Diagnostic = {
            range: rangeOf('cam1_verdict'), severity: DiagnosticSeverity.Error, code: 'YS408', source: 'quorvane',
            message: `跨脚本 global 'cam1_verdict' 重复定义：scripts/cap_inspection.ys:6, ` +
                `scripts/label_inspection.ys:${lines + 1}`,
        };
        if (related)
            expected.relatedInformation = [{
                location: { uri: labelUri, range: Range.create(lines, 11, lines, 23) },
                message: `scripts/label_inspection.ys:${lines + 1}`,
            }];
        assert.deepEqual(told, [expected]);
        await editor.close(labelUri);
        await editor.findings(cap, 0);
        assert.equal(await editor.quit(), 0);
    });
}

test('what changes on the disk is told by the editor, who has been asked for it', async () => {
    const editor = await atWork();
    await editor.until(() => editor.requests.includes('client/registerCapability'));
    const model = join(folder, 'models/runner.json'), kept = readFileSync(model);
    const changed = (type: FileChangeType) => editor.connection.sendNotification(
        DidChangeWatchedFilesNotification.type, { changes: [{ uri: uriOf(model), type }] });
    rmSync(model);
    await changed(FileChangeType.Deleted);
    const told = await editor.findings(projectFile, 1);
    assert.deepEqual(told, {
        uri: projectFile, diagnostics: [{
            range: rangeOf('"models/runner.json"', 'demo.yslib'), severity: DiagnosticSeverity.Error,
            source: 'quorvane', message: '引用的文件不存在：models/runner.json',
        }],
    });
    writeFileSync(model, kept);
    await editor.connection.sendNotification(DidSaveTextDocumentNotification.type, { textDocument: { uri: cap } });
    await changed(FileChangeType.Created);
    await editor.findings(projectFile, 0);
    assert.equal(await editor.quit(), 0);
});

test('the first read of a project is shown', async () => {
    const [editor] = await Editor.withAbilities(everything);
    await editor.until(() => editor.requests.includes('window/workDoneProgress/create'));
    const shown: (WorkDoneProgressBegin | WorkDoneProgressReport | WorkDoneProgressEnd)[] = [];
    let isOver = false;
    editor.connection.onProgress(WorkDoneProgress.type, 'reading-1', value => {
        shown.push(value);
        isOver = value.kind === 'end';
    });
    await editor.open(cap, capText + '$');
    await editor.findings(cap, 1);
    assert.ok(isOver);
    assert.deepEqual(shown, [
        { kind: 'begin', title: 'Reading demo.yslib', percentage: 0 },
        { kind: 'report', message: '1/4 scripts', percentage: 25 },
        { kind: 'report', message: '2/4 scripts', percentage: 50 },
        { kind: 'report', message: '3/4 scripts', percentage: 75 },
        { kind: 'end' },
    ]);
    assert.equal(await editor.quit(), 0);
});

// --- while one types ---------------------------------------------------------------------------

const call = 'threshold(image, 90, 255, region)';
const template = 'threshold( 图像 , 下限 , 上限 , 区域  );';

test('what is known at the cursor is offered', async () => {
    const editor = await atWork();
    const told = await editor.connection.sendRequest(CompletionRequest.type, at(placeOf(call)));
    const list = told as CompletionList;
    assert.equal(list.isIncomplete, false);
    const kindOf = (label: string) => list.items.find(item => item.label === label)?.kind;
    assert.deepEqual(['region', 'judgeCap', 'verdictGood', 'cam2_verdict', 'global'].map(kindOf), [
        CompletionItemKind.Variable, CompletionItemKind.Function, CompletionItemKind.Function,
        CompletionItemKind.Variable, CompletionItemKind.Keyword]);
    assert.equal(await editor.quit(), 0);
});

for (const [snippets, text] of [
    [true, 'threshold( ${1:图像} , ${2:下限} , ${3:上限} , ${4:区域}  );'],
    [false, template],
] as const) {
    test(`calls are offered ${snippets ? 'as snippets' : 'plain'}`, async () => {
        const editor = await atWork(
            { textDocument: { completion: { completionItem: { snippetSupport: snippets } } } });
        const script = uriIn('scripts/new.ys');
        await editor.open(script, 'thresh');
        const told = await editor.connection.sendRequest(
            CompletionRequest.type, at(Position.create(0, 6), script)) as CompletionList;
        const expected: CompletionItem = {
            label: 'threshold', kind: CompletionItemKind.Function, sortText: 'fthreshold', detail: template,
            documentation: '固定阈值分割', textEdit: { range: Range.create(0, 0, 0, 6), newText: text },
        };
        if (snippets)
            expected.insertTextFormat = InsertTextFormat.Snippet;
        assert.deepEqual(told.items.find(item => item.label === 'threshold'), expected);
        assert.equal(await editor.quit(), 0);
    });
}

for (const [kind, value] of [
    [MarkupKind.Markdown, `\`\`\`ys\n${template}\n\`\`\`\n\n固定阈值分割\n\n图像\n\n下限\n\n上限\n\n区域`],
    [MarkupKind.PlainText, `${template}\n固定阈值分割\n图像\n下限\n上限\n区域`],
] as const) {
    test(`a function is told of as ${kind}`, async () => {
        const editor = await atWork({ textDocument: { hover: { contentFormat: [kind] } } });
        const told = await editor.connection.sendRequest(HoverRequest.type, at(placeOf(call)));
        const { line, character } = placeOf(call);
        const expected: Hover = {
            contents: { kind, value }, range: Range.create(line, character, line, character + 'threshold'.length),
        };
        assert.ok(Hover.is(told));
        assert.deepEqual(told, expected);
        assert.equal(await editor.connection.sendRequest(HoverRequest.type, at(Position.create(0, 0))), null);
        assert.equal(await editor.quit(), 0);
    });
}

for (const [offsets, labels] of [
    [true, [[11, 13], [16, 18], [21, 23], [26, 28]]],
    [false, ['图像', '下限', '上限', '区域']],
] as [boolean, ParameterInformation['label'][]][]) {
    test(`the arguments of a call are told ${offsets ? 'by their places' : 'by their names'}`, async () => {
        const editor = await atWork({ textDocument: { signatureHelp: { signatureInformation: {
            parameterInformation: { labelOffsetSupport: offsets } } } } });
        const told = await editor.connection.sendRequest(SignatureHelpRequest.type, at(placeOf('255, region')));
        const expected: SignatureHelp = {
            signatures: [{
                label: template, documentation: '固定阈值分割', parameters: labels.map(label => ({ label })),
            }],
            activeSignature: 0, activeParameter: 2,
        };
        assert.deepEqual(told, expected);
        assert.equal(
            await editor.connection.sendRequest(SignatureHelpRequest.type, at(Position.create(0, 0))), null);
        assert.equal(await editor.quit(), 0);
    });
}

// --- from name to name -------------------------------------------------------------------------

test('a function leads to its declaration in another script, an import to its script', async () => {
    const editor = await atWork();
    const ask = (text: string) => editor.connection.sendRequest(DefinitionRequest.type, at(placeOf(text)));
    const declared: Location[] = [{ uri: limits, range: rangeOf('capDirtMax', 'scripts/limits.ys') }];
    assert.deepEqual(await ask('capDirtMax'), declared);
    assert.ok(declared.every(Location.is));
    assert.deepEqual(await ask('limits.ys'), [{ uri: limits, range: Range.create(0, 0, 0, 0) }]);
    assert.deepEqual(await ask('// Camera 1'), []);
    assert.equal(await editor.quit(), 0);
});

test('a global is found in all scripts and in the project file', async () => {
    const editor = await atWork();
    const ask = (includeDeclaration: boolean) => editor.connection.sendRequest(ReferencesRequest.type,
        { ...at(placeOf('cam1_verdict')), context: { includeDeclaration } });
    // In the order of the project's scripts, its own file last.
    const uses: Location[] = [
        { uri: main, range: rangeOf('cam1_verdict', 'scripts/main.ys') },
        { uri: main, range: rangeOf('cam1_verdict', 'scripts/main.ys', 1) },
        { uri: cap, range: rangeOf('cam1_verdict', capScript, 1) },
        { uri: projectFile, range: rangeOf('cam1_verdict', 'demo.yslib') },
    ];
    const declaration: Location = { uri: cap, range: rangeOf('cam1_verdict') };
    assert.deepEqual(await ask(false), uses);
    assert.deepEqual(await ask(true), [...uses.slice(0, 2), declaration, ...uses.slice(2)]);
    assert.equal(await editor.quit(), 0);
});

test('a global is highlighted where it is written and read', async () => {
    const editor = await atWork();
    const told = await editor.connection.sendRequest(DocumentHighlightRequest.type, at(placeOf('cam1_dirt_mm2')));
    const expected: DocumentHighlight[] = [
        { range: rangeOf('cam1_dirt_mm2'), kind: DocumentHighlightKind.Write },
        { range: rangeOf('cam1_dirt_mm2', capScript, 1), kind: DocumentHighlightKind.Write },
        { range: rangeOf('cam1_dirt_mm2', capScript, 2), kind: DocumentHighlightKind.Read },
    ];
    assert.deepEqual(told, expected);
    assert.equal(await editor.quit(), 0);
});

const newName = 'cam1_result';

test('a global gets another name in the whole project', async () => {
    const editor = await atWork();
    assert.deepEqual(await editor.connection.sendRequest(PrepareRenameRequest.type, at(placeOf('cam1_verdict'))),
        { range: rangeOf('cam1_verdict'), placeholder: 'cam1_verdict' });
    const edit = (name: string, skipped = 0) =>
        ({ range: rangeOf('cam1_verdict', name, skipped), newText: newName });
    const expected: WorkspaceEdit = {
        changes: {
            [cap]: [edit(capScript), edit(capScript, 1)],
            [projectFile]: [edit('demo.yslib')],
            [main]: [edit('scripts/main.ys'), edit('scripts/main.ys', 1)],
        },
    };
    const told = await editor.connection.sendRequest(
        RenameRequest.type, { ...at(placeOf('cam1_verdict')), newName });
    assert.ok(WorkspaceEdit.is(told));
    assert.deepEqual(told, expected);
    assert.equal(await editor.quit(), 0);
});

test('what is no global, and a name against the rule, are refused', async () => {
    const editor = await atWork();
    await refused(editor.connection.sendRequest(PrepareRenameRequest.type, at(placeOf('judgeCap'))),
        LSPErrorCodes.RequestFailed, 'only a global can be renamed');
    await refused(
        editor.connection.sendRequest(RenameRequest.type, { ...at(placeOf('cam1_verdict')), newName: 'width' }),
        LSPErrorCodes.RequestFailed, "'width' breaks the naming rule {camId}_{metric}");
    assert.equal(await editor.quit(), 0);
});

// --- the whole of a script ---------------------------------------------------------------------

// Its outline: the name that is declared, what is said of it, and the last line that belongs to it.
const outline: [string, SymbolKind, string, number][] = [
    ['cam1_diameter_mm', SymbolKind.Variable, 'global float', 3],
    ['cam1_dirt_mm2', SymbolKind.Variable, 'global float', 4],
    ['cam1_verdict', SymbolKind.Variable, 'global int', 5],
    ['measureCap', SymbolKind.Function, '(int image)', 15],
    ['judgeCap', SymbolKind.Function, '()', 28],
    ['inspectCap', SymbolKind.Function, '()', 35],
];

test('the outline of a script', async () => {
    const editor = await atWork();
    const told = await editor.connection.sendRequest(DocumentSymbolRequest.type, { textDocument: { uri: cap } });
    assert.ok(told?.every(DocumentSymbol.is));
    const symbols = told as DocumentSymbol[];
    assert.deepEqual(symbols.map(({ name, kind, detail, range }) => [name, kind, detail, range.end.line]), outline);
    for (const { name, range, selectionRange } of symbols) {
        assert.deepEqual(selectionRange, rangeOf(name));
        assert.ok(range.start.line <= selectionRange.start.line);
    }
    assert.equal(await editor.quit(), 0);
});

test('the outline for an editor that nests nothing', async () => {
    const editor = await atWork({});
    const told = await editor.connection.sendRequest(DocumentSymbolRequest.type, { textDocument: { uri: cap } });
    const symbols = told as SymbolInformation[];
    assert.deepEqual(symbols.map(({ name, kind, location }) => [name, kind, location.uri, location.range.end.line]),
        outline.map(([name, kind, , line]) => [name, kind, cap, line]));
    assert.equal(await editor.quit(), 0);
});

test('the folds of a script', async () => {
    const editor = await atWork();
    await editor.open(main, textIn('scripts/main.ys'));
    const folds = await editor.connection.sendRequest(FoldingRangeRequest.type, { textDocument: { uri: main } });
    assert.ok(folds?.every(FoldingRange.is));
    const expected: FoldingRange[] = [
        { startLine: 0, endLine: 1, kind: FoldingRangeKind.Comment },
        { startLine: 2, endLine: 4, kind: FoldingRangeKind.Imports },
        ...[[12, 16], [19, 21], [24, 35], [29, 30], [31, 32], [33, 34], [41, 50], [42, 43], [47, 49]].map(
            ([startLine, endLine]) => ({ startLine, endLine })),
    ];
    assert.deepEqual(folds, expected);
    assert.equal(await editor.quit(), 0);
});

// Each word with its kind, as the five numbers of each say.
function wordsIn(text: string, { data }: SemanticTokens, kinds: string[]): [string, string][] {
    const lines = text.split('\n');
    const words: [string, string][] = [];
    let line = 0, column = 0;
    for (let i = 0; i < data.length; i += 5) {
        column = data[i] === 0 ? column + data[i + 1] : data[i + 1];
        line += data[i];
        words.push([lines[line].slice(column, column + data[i + 2]), kinds[data[i + 3]]]);
    }
    return words;
}

test('the words of a script have their kinds', async () => {
    const [editor, greeting] = await Editor.withAbilities({ textDocument: { semanticTokens: {
        requests: { full: true }, tokenTypes: [], tokenModifiers: [], formats: [TokenFormat.Relative] } } });
    const text = '// 平\nglobal int cam9_sum = 1 + table.size\nprint("one\n  two")';
    await editor.open(uriIn('words.ys'), text);
    const told = await editor.connection.sendRequest(
        SemanticTokensRequest.type, { textDocument: { uri: uriIn('words.ys') } });
    assert.ok(SemanticTokens.is(told));
    const kinds = greeting.capabilities.semanticTokensProvider!.legend.tokenTypes;
    assert.deepEqual(wordsIn(text, told, kinds), [
        ['// 平', 'comment'], ['global', 'keyword'], ['int', 'type'], ['cam9_sum', 'variable'], ['=', 'operator'],
        ['1', 'number'], ['+', 'operator'], ['table', 'variable'], ['size', 'property'], ['print', 'function'],
        ['"one', 'string'], ['  two"', 'string'],
    ]);
    assert.equal(await editor.quit(), 0);
});

// --- all of it ---------------------------------------------------------------------------------

test('every message has the type that the protocol gives it', () => {
    assert.deepEqual(faultsOf(everythingSaid, 'said.ts'), []);
});

test('a message of another type would be seen', () => {
    const wrong = [{ contents: 'a', colour: 'b' }, {}, { contents: 1 }, { contents: { kind: 'html', value: 'a' } }];
    const answers = new Map<unknown, string>([[1, 'textDocument/hover']]);
    const said = wrong.map(result => ({ message: { jsonrpc: '2.0', id: 1, result }, answers }));
    assert.equal(faultsOf(said, 'wrong.ts').length, wrong.length);
});
