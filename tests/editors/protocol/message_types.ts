// Holds what a server has said to the types of the protocol: each message is written down as a value of its
// type, and the compiler has the last word. It sees keys that are unknown, missing or of another kind.
import { writeFileSync } from 'node:fs';
import ts from 'typescript';
import * as protocol from 'vscode-languageserver-protocol/node';
import { Said } from './editor';

type Namespace = { type?: { method?: string } };

// The names that the library gives to the protocol's methods.
const nameOfMethod = new Map(Object.entries(protocol as unknown as Record<string, Namespace>)
    .filter(([, namespace]) => namespace?.type?.method !== undefined)
    .map(([name, namespace]) => [namespace.type!.method!, name] as const));

const prelude = `
import * as protocol from 'vscode-languageserver-protocol/node';
import { ProtocolNotificationType, ProtocolRequestType, ProtocolRequestType0 } from
    'vscode-languageserver-protocol/node';
type Told<R> = R extends void ? null : R; // nothing is told as null
type ResultOf<T> = T extends ProtocolRequestType<any, infer R, any, any, any> ? Told<R>
    : T extends ProtocolRequestType0<infer R, any, any, any> ? Told<R> : never;
type ParamsOf<T> = T extends ProtocolRequestType<infer P, any, any, any, any> ? P
    : T extends ProtocolNotificationType<infer P, any> ? P : never;
type Progress = { token: protocol.ProgressToken, value: protocol.WorkDoneProgressBegin |
    protocol.WorkDoneProgressReport | protocol.WorkDoneProgressEnd };
`;

// The envelope with the type of what it carries.
function typeOf({ message, answers }: Said): string {
    const typeOfMethod = (method: string) => `typeof protocol.${nameOfMethod.get(method)}.type`;
    if (protocol.Message.isResponse(message)) {
        if (message.error !== undefined)
            return 'protocol.ResponseMessage & { result?: never }';
        const result = `ResultOf<${typeOfMethod(answers.get(message.id)!)}>`;
        return `{ jsonrpc: '2.0', id: number, result: ${result} }`;
    }
    const method = (message as protocol.NotificationMessage).method;
    const params = method === '$/progress' ? 'Progress' : `ParamsOf<${typeOfMethod(method)}>`;
    const id = protocol.Message.isRequest(message) ? ' id: string | number,' : '';
    return `{ jsonrpc: '2.0',${id} method: '${method}', params: ${params} }`;
}

// What the compiler has against these messages. The file is for who wants to look into it.
export function faultsOf(said: Said[], file: string): string[] {
    const lines = said.map((one, i) => `export const said${i}: ${typeOf(one)} = ${JSON.stringify(one.message)};`);
    writeFileSync(file, prelude + lines.join('\n') + '\n');
    const program = ts.createProgram([file], {
        strict: true, noEmit: true, skipLibCheck: true, target: ts.ScriptTarget.ES2022,
        module: ts.ModuleKind.Node16, types: ['node'],
    });
    return ts.getPreEmitDiagnostics(program).map(fault => ts.flattenDiagnosticMessageText(fault.messageText, '\n'));
}
