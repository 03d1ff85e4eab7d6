-- What the log-in lacks in the server's own module: guesses are slowed down, and what opens a page opens it once.
-- Runs twice for a request, before the log-in and before the answer. The server is one process, so its globals are the
-- memory of all requests; it goes when the server starts again.

-- After so many wrong log-ins an address is locked for so many seconds, and twice as long after each further one.
local WRONG_LOG_INS, FIRST_LOCK, LONGEST_LOCK = 5, 60, 3600
-- Seconds until a wrong log-in is forgotten: longer than the longest lock, or waiting for its end would be all it costs.
local REMEMBERED = 86400

local LINES_A_SECOND = 10 -- of the audit
local USERS = os.getenv("WEBCONFIG_USERS") or "/etc/lighttpd/lighttpd.user" -- as in lighttpd.conf

-- Remembers what was put last: at least so many things, at most twice as many.
local function Memory(most)
    local young, old, count = {}, {}, 0
    local memory = {}
    function memory.get(key)
        return young[key] or old[key]
    end
    function memory.put(key, value)
        if not young[key] then
            if count == most then
                young, old, count = {}, young, 0
            end
            count = count + 1
        end
        young[key] = value
    end
    function memory.drop(key)
        if young[key] then
            count = count - 1
        end
        young[key], old[key] = nil, nil
    end
    return memory
end

local function Secret()
    local random = assert(io.open("/dev/urandom", "rb"))
    local secret = random:read(32)
    random:close()
    return secret
end

-- The address that was wrong last is known longest: it is the one that guesses. Whoever would make us forget it needs
-- thousands of addresses, and has more guesses with those than forgetting gives back. Nonces are put when they have
-- opened a page, so only who knows the password could make us forget one.
if not _G.addresses then
    _G.addresses, _G.nonces, _G.secret = Memory(2048), Memory(1024), Secret()
end
local addresses, nonces, secret = _G.addresses, _G.nonces, _G.secret

local r = lighty.r
local address = r.req_attr["request.remote-addr"]
local authorization = r.req_header["Authorization"]

-- Seconds since the start of the system. The clock of the day is set while we run.
local function Now()
    local uptime = assert(io.open("/proc/uptime"))
    local seconds = uptime:read("n")
    uptime:close()
    return seconds
end

-- A word of a line of the audit: what is not one of these characters could end it, or the shell's quotes.
local function Word(value)
    if not value or value == "" then
        return "-"
    end
    local word = value == "-" and "%2D" or value:sub(1, 120):gsub("[^%w._/:,+@-]", function(byte)
        return ("%%%02X"):format(byte:byte())
    end)
    return #value > 120 and word .. "%.." or word
end

-- A line of the audit, which is in another place than what the server says of itself. That costs a process, so of a flood
-- only a part is told here, and all in the server's own lines.
local function Audit(result, user, more)
    local second = math.floor(Now())
    if second ~= _G.second then
        _G.second, _G.lines = second, 0
    end
    _G.lines = _G.lines + 1
    if _G.lines <= LINES_A_SECOND then
        os.execute(("logger -t lighttpd -p authpriv.notice " ..
            "'audit event=login result=%s user=%s address=%s page=%s time=%s%s' &"):format(result, Word(user),
            Word(address), Word(r.req_attr["uri.path"]), os.date("!%Y-%m-%dT%H:%M:%SZ"), more or ""))
    end
end

-- The parameters of the header; nil where it is not written as browsers write it. What we read must be what the server
-- reads: so nothing is skipped, and none may be there twice.
local function Parameters(header)
    local found, rest = {}, header:match("^%a+ +(.*)$")
    while rest and rest ~= "" do
        local name, value, behind = rest:match('^([%a*]+)="([^"\\]*)"(.*)$')
        if not name then
            name, value, behind = rest:match('^([%a*]+)=([^%s,"\\]+)(.*)$')
        end
        if not name or found[name] then
            return nil
        end
        found[name] = value
        rest = behind == "" and "" or behind:match("^ *, *(.+)$")
    end
    return rest and found
end

local function Signature(nonce)
    return lighty.c.hmac("sha256", secret, nonce):sub(1, 32)
end

local function IsOurs(nonce)
    local text, signature = nonce:match("^(.*):(.*)$")
    return text and lighty.c.digest_eq(signature, Signature(text))
end

-- Takes a count of a nonce; false where it was taken before. Browsers ask for several things at once, so they come in
-- any order: of the last 64 it is known which were there, and what comes later than those is too late.
local function Take(nonce, count)
    local entry = nonces.get(nonce) or { last = 0, taken = 0 }
    local ahead = count - entry.last
    if ahead > 0 then
        entry.last, entry.taken = count, entry.taken << ahead | 1
    elseif ahead <= -64 or entry.taken >> -ahead & 1 == 1 then
        return false
    else
        entry.taken = entry.taken | 1 << -ahead
    end
    nonces.put(nonce, entry)
    return true
end

local function Locked()
    local entry = addresses.get(address)
    local left = entry and entry.free and entry.free - Now() or 0
    return left > 0 and math.ceil(left)
end

local function BeforeLogIn()
    local left = Locked()
    if left then
        r.resp_header["Retry-After"] = tostring(left)
        r.resp_header["Content-Type"] = "text/plain; charset=utf-8"
        r.resp_body.set("Too many wrong log-ins from your address. Try again in " .. left .. " seconds.\n")
        return 429
    end
    if not authorization or authorization:sub(1, 7):lower() ~= "digest " then
        return
    end
    local parameters = Parameters(authorization) or {}
    local count = parameters.nonce and tonumber(parameters.nc or "", 16)
    if not count then
        return 400
    end
    -- As if it had sent none: the browser asks again with the new nonce, and nobody notices.
    if not IsOurs(parameters.nonce) or not Take(parameters.nonce, count) then
        r.req_header["Authorization"] = nil
        r.req_env["STALE"] = "yes"
    end
end

local function Wrong(user)
    local now = Now()
    local entry = addresses.get(address)
    if not entry or entry.latest + REMEMBERED < now then
        entry = { wrong = 0 }
    end
    entry.wrong, entry.latest = entry.wrong + 1, now
    addresses.put(address, entry)
    Audit("refused", user)
    if entry.wrong >= WRONG_LOG_INS then
        local seconds = math.min(FIRST_LOCK * 2 ^ (entry.wrong - WRONG_LOG_INS), LONGEST_LOCK)
        entry.free = now + seconds
        Audit("locked", user, (" seconds=%d"):format(seconds))
    end
end

-- Whether there is a hash of the password for SHA-256. Without one a browser that takes the offer could not log in.
local function HasSha256()
    local users = io.open(USERS)
    local text = users and users:read("a") or ""
    if users then
        users:close()
    end
    return text:find((":" .. ("%x"):rep(64) .. "%f[^%x]")) ~= nil
end

local function Sign(header)
    return (header:gsub('nonce="([^"]*)"', function(nonce)
        return ('nonce="%s:%s"'):format(nonce, Signature(nonce))
    end))
end

-- The challenges of the server, a line each, as we make them.
local function Challenges(lines)
    local offered = {}
    for challenge in lines:gmatch("Digest [^\r]+") do
        if not challenge:find("SHA-256", 1, true) or HasSha256() then
            offered[#offered + 1] = Sign(challenge) .. (r.req_env["STALE"] and ", stale=true" or "")
        end
    end
    return table.concat(offered, "\r\nWWW-Authenticate: ")
end

local function BeforeAnswer()
    local answer = r.resp_header
    local challenges, renewed = answer["WWW-Authenticate"], answer["Authentication-Info"]
    local parameters = authorization and Parameters(authorization) or {}
    local entry = parameters.nonce and nonces.get(parameters.nonce)
    if r.req_env["REMOTE_USER"] then
        addresses.drop(address)
        if entry then
            entry.proven = true
        end
    elseif entry and not entry.proven then
        nonces.drop(parameters.nonce)
    end
    if renewed then
        answer["Authentication-Info"] = Sign(renewed)
    end
    if challenges then
        if authorization and not challenges:find("stale=true", 1, true) then
            Wrong(parameters.username)
        end
        answer["WWW-Authenticate"] = Challenges(challenges)
    end
end

if r.req_item["http_status"] == 0 then
    return BeforeLogIn()
end
BeforeAnswer()
