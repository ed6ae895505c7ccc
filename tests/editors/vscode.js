// Stands in for the editor: loads the extension, and prints how it starts its client and that it stops it.
const Module = require('node:module');
const [extension, tool] = process.argv.slice(2);
const told = [];

class LanguageClient {
    constructor(id, name, server, client) {
        told.push({ id, name, server, client });
    }
    async start() {
        told.push('started');
    }
    async stop() {
        told.push('stopped');
    }
}

// One that sets nothing has the default.
const workspace = {
    getConfiguration: section => ({
        get: (key, otherwise) => `${section}.${key}` === 'quorvane.tool' && tool ? tool : otherwise,
    }),
};
const stands = { 'vscode': { workspace }, 'vscode-languageclient/node': { LanguageClient } };
const load = Module._load;
Module._load = (name, ...rest) => stands[name] ?? load(name, ...rest);

const { activate, deactivate } = require(extension);
(async () => {
    await deactivate(); // nothing has been started
    await activate({ extensionPath: '/extension' });
    await deactivate();
    console.log(JSON.stringify(told));
})();
