-- What the browser is held to, on every answer: also on those that the server gives before it has looked at the path.
-- A header that the backend has set stays as it is; its answers have the same ones.
local headers = {
    ["Content-Security-Policy"] =
        "default-src 'none'; img-src 'self'; form-action 'none'; base-uri 'none'; frame-ancestors 'none'",
    ["X-Content-Type-Options"] = "nosniff",
    ["X-Frame-Options"] = "DENY",
    ["Referrer-Policy"] = "same-origin",
    ["Permissions-Policy"] =
        "accelerometer=(), camera=(), display-capture=(), geolocation=(), gyroscope=(), magnetometer=(), " ..
        "microphone=(), midi=(), payment=(), usb=()",
    ["Cross-Origin-Opener-Policy"] = "same-origin",
    ["Cross-Origin-Resource-Policy"] = "same-origin",
}

local r = lighty.r
local answer, status = r.resp_header, r.req_item["http_status"]
-- Which scripts a page has only the backend knows: without a policy of its own it has none. (Only what the backend
-- answers has a path behind its script's.)
if status == 200 and (r.req_attr["request.path-info"] or "") ~= "" then
    headers["Content-Security-Policy"] = nil
end
for name, value in pairs(headers) do
    if not answer[name] then
        answer[name] = value
    end
end
-- Not the scheme: it is unknown where the head of a request was no good.
if r.req_attr["request.server-port"] == "443" then
    answer["Strict-Transport-Security"] = "max-age=31536000"
end
if status >= 400 and not answer["Cache-Control"] then
    answer["Cache-Control"] = "no-store"
end
