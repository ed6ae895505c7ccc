// An editor, as the protocol's own library makes one: it starts the server, keeps what the server says, and
// waits for what it tells of a file.
import assert from 'node:assert/strict';
import { ChildProcessWithoutNullStreams, spawn } from 'node:child_process';
import { once } from 'node:events';
import { pathToFileURL } from 'node:url';
import {
    ClientCapabilities, createProtocolConnection, DataCallback, DidCloseTextDocumentNotification,
    DidOpenTextDocumentNotification, Disposable, ExitNotification, InitializedNotification, InitializeRequest,
    InitializeResult, Message, ProtocolConnection, PublishDiagnosticsNotification, PublishDiagnosticsParams,
    RegistrationRequest, ShutdownRequest, StreamMessageReader, StreamMessageWriter, WorkDoneProgressCreateRequest,
} from 'vscode-languageserver-protocol/node';

// A message of the server, and what it answers.
export interface Said {
    message: Message;
    answers: Map<unknown, string>; // the methods of the editor's own requests, by id
}

// Of all servers of this run.
export const everythingSaid: Said[] = [];

class KeepingReader extends StreamMessageReader {
    readonly methods = new Map<unknown, string>();

    override listen(callback: DataCallback): Disposable {
        return super.listen(message => {
            everythingSaid.push({ message, answers: this.methods });
            callback(message);
        });
    }
}

class KeepingWriter extends StreamMessageWriter {
    constructor(stream: NodeJS.WritableStream, private readonly methods: Map<unknown, string>) {
        super(stream);
    }

    override write(message: Message): Promise<void> {
        if (Message.isRequest(message))
            this.methods.set(message.id, message.method);
        return super.write(message);
    }
}

export class Editor {
    private static readonly all: Editor[] = [];
    readonly connection: ProtocolConnection;
    readonly requests: string[] = []; // methods of the server's own
    private readonly server: ChildProcessWithoutNullStreams;
    private readonly ended: Promise<unknown[]>;
    private readonly told = new Map<string, PublishDiagnosticsParams>();
    private heard = () => {};

    // One that has not said anything yet.
    constructor() {
        this.server = spawn(process.env.TOOL!, ['language-server'], { stdio: ['pipe', 'pipe', 'pipe'] });
        Editor.all.push(this);
        this.ended = once(this.server, 'exit');
        const reader = new KeepingReader(this.server.stdout);
        const writer = new KeepingWriter(this.server.stdin, reader.methods);
        this.connection = createProtocolConnection(reader, writer);
        for (const type of [RegistrationRequest.type, WorkDoneProgressCreateRequest.type])
            this.connection.onRequest(type.method, () => {
                this.requests.push(type.method);
                this.heard();
                return null;
            });
        this.connection.onNotification(PublishDiagnosticsNotification.type, params => {
            this.told.set(params.uri, params);
            this.heard();
        });
        this.connection.listen();
    }

    // The first words of a conversation are said, with the greeting beside it.
    static async withAbilities(capabilities: ClientCapabilities): Promise<[Editor, InitializeResult]> {
        const editor = new Editor();
        const greeting = await editor.connection.sendRequest(
            InitializeRequest.type, { processId: process.pid, rootUri: null, capabilities });
        await editor.connection.sendNotification(InitializedNotification.type, {});
        return [editor, greeting];
    }

    open(uri: string, text: string): Promise<void> {
        return this.connection.sendNotification(DidOpenTextDocumentNotification.type,
            { textDocument: { uri, languageId: 'ys', version: 1, text } });
    }

    close(uri: string): Promise<void> {
        return this.connection.sendNotification(DidCloseTextDocumentNotification.type, { textDocument: { uri } });
    }

    // Whenever something has come, until it holds.
    async until(holds: () => boolean): Promise<void> {
        while (!holds())
            await new Promise<void>(resolve => this.heard = resolve);
    }

    findingsOf(uri: string): PublishDiagnosticsParams | undefined {
        return this.told.get(uri);
    }

    // The findings of that file, once there are so many; of that version of it, if one is given.
    async findings(uri: string, count: number, version?: number): Promise<PublishDiagnosticsParams> {
        await this.until(() => {
            const told = this.told.get(uri);
            return told?.diagnostics.length === count && (version === undefined || told.version === version);
        });
        return this.told.get(uri)!;
    }

    // The exit status behind the messages that an editor ends with.
    async quit(): Promise<unknown> {
        assert.equal(await this.connection.sendRequest(ShutdownRequest.type), null);
        return this.exit();
    }

    async exit(): Promise<unknown> {
        await this.connection.sendNotification(ExitNotification.type);
        return this.status();
    }

    async status(): Promise<unknown> {
        const [status] = await this.ended;
        this.connection.dispose();
        return status;
    }

    vanish(): void {
        this.server.stdin.end();
    }

    // Behind a test that has failed somewhere.
    static endAll(): void {
        for (const editor of Editor.all.splice(0))
            editor.vanish();
    }
}

export function uriOf(path: string): string {
    return pathToFileURL(path).href;
}
