-- wrk posts the status call that its argument names.
function init(arguments)
    wrk.method = "POST"
    wrk.body = '{"method":"' .. arguments[1] .. '","params":[],"id":1}'
    wrk.headers["Content-Type"] = "application/json"
end
