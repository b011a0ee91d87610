-- usage: edges.lua LIBRARY EXAMPLES: where bindings of LuaJIT break if they break: layouts, texts, failures in functions
-- of the host, handles that the collector releases.
package.path = arg[2] .. "/?.lua;" .. package.path
local ffi = require("ffi")
local korvale = require("korvale_door")(arg[1])
local library = korvale.library

-- What `run` fails with.
local function refusal(run, ...)
    return select(2, pcall(run, ...))
end

-- Structs lie as the C compiler has them.
local asserted = 0
for line in io.popen('"' .. arg[2] .. '/../../tools/declare_door" assertions'):lines() do
    local struct, size = line:match("sizeof%((%S+)%) == (%d+)")
    local of, field, offset = line:match("offsetof%((%S+), (%S+)%) == (%d+)")
    if struct then assert(ffi.sizeof(struct) == tonumber(size), line) end
    if of then assert(ffi.offsetof(of, field) == tonumber(offset), line) end
    asserted = asserted + (struct and 1 or 0) + (of and 1 or 0)
end
assert(asserted > 150, asserted)

-- Texts are good as long as what they are of, and copies longer.
local system = korvale.make("korvale_equations", "equations_new")
for k = 0, 99 do
    korvale.call("equations_declare", system, "v" .. string.char(97 + k / 26) .. string.char(97 + k % 26), 0)
end
collectgarbage()
local name = ffi.string(library.korvale_equations_name(system, 2))
local failure = ffi.new("korvale_error")
library.korvale_equations_add(system, "vaa = vzz", nil, failure)
korvale.free("korvale_equations", system)
assert(name == "vaa" and ffi.string(failure.word) == "vzz" and failure.place == 6)

-- What a progress raises ends the run, comes back as it was, and does not stay.
local corner, numbers = ffi.new("double[9]", {0, 0, 0, 1, 0, 0, 0, 1, 0}), ffi.new("int32_t[3]", {0, 1, 2})
local faces = ffi.new("korvale_faces", {{data = corner, count = 3}, {}, {data = numbers, count = 3}})
local relaxer = korvale.make("korvale_relaxer", "relaxer_new", faces, nil)
korvale.call("relaxer_keep", relaxer, library.KORVALE_LENGTHS, 0.1)
corner[0] = -0.5
local moving = ffi.new("korvale_points_out", {data = corner, count = 3})
local came_to = ffi.new("korvale_relaxation")
local raised = {}
local fails = korvale.callback("int32_t (*)(int32_t, double, void*)", function() error(raised) end)
local options = korvale.options("korvale_run_options", {progress = fails})
assert(refusal(korvale.call, "relaxer_run", relaxer, moving, options, came_to) == raised)
assert(came_to.steps == 1 and came_to.stop == library.KORVALE_RUN_CANCELLED)
korvale.call("relaxer_run", relaxer, moving, nil, came_to)
assert(came_to.stop ~= library.KORVALE_RUN_CANCELLED)
fails:free()

-- Of what fails there is no handle, and no function that releases minds.
local odd = ffi.new("int32_t[2]", {0, 1})
local mesh = ffi.new("korvale_triangles", {{}, {data = odd, count = 2}})
local text = refusal(korvale.make, "korvale_grid", "grid_new", mesh, nil)
assert(text:match("^korvale_grid_new: triangles must "), text)
for _, free in pairs(require("korvale_c").free) do library[free](nil) end

-- Handles that nobody holds are released by the collector: valgrind would see them.
for _ = 1, 20 do
    korvale.make("korvale_offsetter", "offsetter_new")
    collectgarbage()
end
