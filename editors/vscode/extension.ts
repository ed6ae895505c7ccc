// Starts the language server for scripts and project files; what it can do is told by the server.
import { ExtensionContext, workspace } from 'vscode';
import { LanguageClient } from 'vscode-languageclient/node';

let client: LanguageClient | undefined;

export function activate(context: ExtensionContext): Promise<void> {
    // The setting is the machine's alone: a folder that one opens cannot say which program is started, and no
    // program that lies in it is taken for the tool, as some systems would from the working folder.
    const command = workspace.getConfiguration('quorvane').get<string>('tool', 'quorvanectl');
    const server = { command, args: ['language-server'], options: { cwd: context.extensionPath } };
    client = new LanguageClient('quorvane', 'Quorvane', server, {
        documentSelector: [
            { scheme: 'file', language: 'ys' },
            { scheme: 'untitled', language: 'ys' },
            { scheme: 'file', pattern: '**/*.yslib' },
        ],
    });
    return client.start();
}

export function deactivate(): Promise<void> | undefined {
    return client?.stop();
}
