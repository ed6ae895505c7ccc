-- What somebody does who edits a script: a mistake and its mending, a completion, a look at a function, a
-- jump to its declaration, and another name for a global. Nothing is saved.
local project = os.getenv('PROJECT')
local patience = 60000 -- milliseconds; each wait ends with its condition

local function fail(text)
    io.stderr:write('failed: ' .. text .. '\n')
    vim.cmd('cquit 1')
end

local function check(what, found, expected)
    if not vim.deep_equal(found, expected) then
        fail(what .. ': ' .. vim.inspect(found) .. ', not ' .. vim.inspect(expected))
    end
    print('ok: ' .. what .. '\n')
end

local function wait_for(what, condition)
    check(what, vim.wait(patience, condition, 20), true)
end

vim.opt.hidden = true
vim.cmd('edit ' .. project .. '/scripts/cap_inspection.ys')
local script = vim.api.nvim_get_current_buf()
wait_for('the server has begun', function() return next(vim.lsp.buf_get_clients(script)) ~= nil end)
local client = next(vim.lsp.buf_get_clients(script))

local function line_of(text)
    for number, line in ipairs(vim.api.nvim_buf_get_lines(0, 0, -1, true)) do
        local column = line:find(text, 1, true)
        if column then return number, column end
    end
    fail('no ' .. text)
end

-- Puts the cursor on the text and asks what stands there.
local function ask(method, text)
    local line, column = line_of(text)
    vim.api.nvim_win_set_cursor(0, { line, column })
    local answers = vim.lsp.buf_request_sync(0, method, vim.lsp.util.make_position_params(), patience)
    return answers[client].result
end

-- A mistake, and its mending.
local good = vim.api.nvim_buf_get_lines(script, 3, 4, true)
vim.api.nvim_buf_set_lines(script, 3, 4, true, { good[1] .. ' $' })
wait_for('a finding appears', function() return #vim.diagnostic.get(script) == 1 end)
local finding = vim.diagnostic.get(script)[1]
check('its text', finding.message, '无法识别的字符')
check('its place', { finding.lnum, finding.col }, { 3, #good[1] + 1 })
vim.api.nvim_buf_set_lines(script, 3, 4, true, good)
wait_for('the finding goes', function() return #vim.diagnostic.get(script) == 0 end)

-- What is offered.
local labels = {}
for _, item in ipairs(ask('textDocument/completion', 'threshold(image, 90').items) do
    labels[item.label] = true
end
check('what is offered', { labels.region, labels.judgeCap, labels.verdictGood, labels.cam2_verdict,
    labels.threshold, labels.global }, { true, true, true, true, true, true })

-- What is told.
local told = ask('textDocument/hover', 'threshold(image, 90')
check('a function of the library is told of', vim.inspect(told):find('threshold', 1, true) ~= nil, true)

-- A jump into another script.
local line, column = line_of('capDirtMax')
vim.api.nvim_win_set_cursor(0, { line, column })
vim.lsp.buf.definition()
wait_for('the jump leads to another script',
    function() return vim.api.nvim_buf_get_name(0) == project .. '/scripts/limits.ys' end)
check('the line there', vim.api.nvim_get_current_line(), 'function capDirtMax() {')

-- Another name for a global.
vim.api.nvim_set_current_buf(script)
line, column = line_of('cam1_verdict')
vim.api.nvim_win_set_cursor(0, { line, column })
vim.lsp.buf.rename('cam1_result')
wait_for('the global has another name', function() return vim.api.nvim_get_current_line() == 'global int cam1_result = 0' end)
local changed = {}
for _, buffer in ipairs(vim.api.nvim_list_bufs()) do
    local text = table.concat(vim.api.nvim_buf_get_lines(buffer, 0, -1, true), '\n')
    local _, count = text:gsub('cam1_result', '')
    if count > 0 then
        changed[vim.fn.fnamemodify(vim.api.nvim_buf_get_name(buffer), ':t')] = count
    end
    check('the old name is gone', text:find('cam1_verdict', 1, true), nil)
end
check('in all files', changed, { ['cap_inspection.ys'] = 2, ['main.ys'] = 2, ['demo.yslib'] = 1 })

local params = vim.lsp.util.make_position_params()
params.newName = 'width'
local refused = vim.lsp.buf_request_sync(0, 'textDocument/rename', params, patience)[client]
check('a name against the rule is refused', refused.error.message,
    "'width' breaks the naming rule {camId}_{metric}")

vim.lsp.stop_client(client)
wait_for('the server ends', function() return vim.lsp.client_is_stopped(client) end)
vim.cmd('qall!')
