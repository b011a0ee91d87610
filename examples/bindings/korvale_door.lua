-- Calls of korvale_c.h as LuaJIT likes them: require("korvale_door")(path) opens the library, by its name without one.
-- Calls may come back into Lua, which compiled code cannot, so none of them is compiled.
local ffi = require("ffi")
local declared = require("korvale_c")

return function(path)
    local library = ffi.load(path or "korvale")
    local korvale = {library = library}
    local failed -- what a function of Lua has failed with, until the call that came to it is over

    -- Hands back what a call returns, unless a function of Lua has failed meanwhile.
    local function finish(...)
        local text = failed
        failed = nil
        if text ~= nil then error(text, 0) end
        return ...
    end

    -- Calls what cannot fail.
    function korvale.run(name, ...)
        return finish(library["korvale_" .. name](...))
    end

    -- Calls what takes an error last; what it refuses becomes an error of Lua.
    function korvale.call(name, ...)
        local failure = ffi.new("korvale_error")
        local count = select("#", ...) + 1
        local arguments = {...}
        arguments[count] = failure
        if korvale.run(name, unpack(arguments, 1, count)) ~= library.KORVALE_OK then
            error(ffi.string(failure.text), 0)
        end
    end

    -- Makes a handle, which the collector releases unless korvale.free does.
    function korvale.make(kind, name, ...)
        local made = ffi.new(kind .. "*[1]")
        local count = select("#", ...) + 1
        local arguments = {...}
        arguments[count] = made
        korvale.call(name, unpack(arguments, 1, count))
        return ffi.gc(made[0], library[declared.free[kind]])
    end

    -- Releases a handle now. One that releases by a function of Lua must not be left to the collector.
    function korvale.free(kind, handle)
        library[declared.free[kind]](ffi.gc(handle, nil))
        finish()
    end

    -- The defaults of options, with some changed.
    function korvale.options(kind, changed)
        local options = ffi.new(kind)
        library[declared.defaults[kind]](options, ffi.sizeof(options))
        for name, value in pairs(changed) do options[name] = value end
        return options
    end

    -- A function of Lua as one of C, until its free is called. Nothing may unwind through the library: what it raises
    -- waits for the end of the call, and `stop` says what to return instead, 0 without it.
    function korvale.callback(kind, run, stop)
        return ffi.cast(kind, function(...)
            local done, result = pcall(run, ...)
            if done then return result end
            if failed == nil then failed = result end
            return stop and stop() or 0
        end)
    end

    for _, called in pairs({finish, korvale.run, korvale.call, korvale.make, korvale.free}) do jit.off(called, true) end
    return korvale
end
