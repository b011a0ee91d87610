-- The tour in LuaJIT. Run: luajit tour.lua LIBRARY, such as ~/opt/korvale/lib/libkorvale.so.1
package.path = arg[0]:gsub("[^/]*$", "") .. "?.lua;" .. package.path
local ffi = require("ffi")
local korvale = require("korvale_door")(arg[1])
local library = korvale.library

-- What `run` fails with.
local function refusal(run, ...)
    return select(2, pcall(run, ...))
end

-- An outline, moved outwards by half a unit.
local function outlines()
    local square = ffi.new("double[8]", {0, 0, 4, 0, 4, 4, 0, 4})
    local outline = ffi.new("korvale_points", {data = square, count = 4, dim = 2})
    local moved = ffi.new("double[12]")
    local border = ffi.new("korvale_border", {points = moved})
    korvale.call("offset", outline, 0.5, nil, border)
    for i = 0, tonumber(border.count) - 1 do
        print(string.format("%g %g", moved[3 * i], moved[3 * i + 1]))
    end
    outline.count = 2
    print(refusal(korvale.call, "offset", outline, 0.5, nil, border))
end

-- 10,000 rays at hills of 2,048 triangles.
local function rays()
    local side, count = 32, 10000
    local hills, eyes = ffi.new("double[?][3]", (side + 1) ^ 2), ffi.new("double[?][3]", count)
    local corners = ffi.new("int32_t[?][6]", side ^ 2)
    for i = 0, side do
        for j = 0, side do
            hills[i * (side + 1) + j] = {j, i, (7 * i + 13 * j) % 5 / 4}
        end
    end
    for i = 0, side - 1 do
        for j = 0, side - 1 do
            local a, b = i * (side + 1) + j, (i + 1) * (side + 1) + j
            corners[i * side + j] = {a, a + 1, b + 1, a, b + 1, b}
        end
    end
    for k = 0, count - 1 do
        eyes[k] = {k % 100 * 0.25 + 0.125, math.floor(k / 100) * 0.25 + 0.0625, 9}
    end
    local mesh = ffi.new("korvale_triangles", {{data = hills, count = (side + 1) ^ 2}, {data = corners, count = 6 * side ^ 2}})
    local grid = korvale.make("korvale_grid", "grid_new", mesh, nil)
    local origins = ffi.new("korvale_points", {data = eyes, count = count})
    local down = ffi.new("double[3]", {0.015625, 0.0078125, -1})
    local direction = ffi.new("korvale_points", {data = down, count = 1})
    local triangles, distances = ffi.new("int32_t[?]", count), ffi.new("double[?]", count)
    local met = ffi.new("korvale_ray_columns", {triangles = triangles, distances = distances})
    korvale.call("grid_cast", grid, origins, direction, met, nil, nil)
    local numbers, way = 0, 0
    for k = 0, count - 1 do
        numbers = numbers + triangles[k]
        way = way + distances[k]
    end
    print(string.format("triangles %.17g, distances %.17g", numbers, way))
end

-- The heights of 10,000 points, written between their other coordinates, by a function of Lua.
local function equations()
    local rows, stride = 10000, 3 * ffi.sizeof("double")
    local points = ffi.new("double[?][3]", rows)
    for k = 0, rows - 1 do
        points[k] = {k % 100 - 50, math.floor(k / 100), 0}
    end
    local x, y = "x", "y" -- in variables of their own as long as the columns point to them
    local columns = ffi.new("korvale_column[2]", {{x, {data = points[0], count = rows, stride = stride}},
                                                  {y, {data = points[0] + 1, count = rows, stride = stride}}})
    local heights = ffi.new("korvale_numbers_out", {data = points[0] + 2, count = rows, stride = stride})
    local system = korvale.make("korvale_equations", "equations_new")
    local calls, wave, steep = 0, ffi.new("int32_t[1]"), ffi.new("int32_t[1]")
    local stop = function() library.korvale_equations_stop(system) end
    local ripple = korvale.callback("korvale_function", function(a)
        calls = calls + 1
        return a[0] * a[0] / 8
    end, stop)
    local root = korvale.callback("korvale_function", function(a)
        if a[0] < 0 then error("no root of " .. a[0], 0) end
        return 0
    end, stop)
    local forget = korvale.callback("void (*)(void*)", function() print("called " .. calls .. " times") end)
    korvale.call("equations_declare", system, "x y z t", 0)
    korvale.call("equations_function", system, "RIPPLE", 1, ripple, nil, forget)
    korvale.call("equations_function", system, "ROOT", 1, root, nil, nil)
    korvale.call("equations_add", system, "z = RIPPLE(x) + t * y", wave)
    korvale.call("equations_add", system, "z = ROOT(x)", steep)
    korvale.call("equations_set", system, "t", 0.5)
    korvale.call("equations_evaluate_rows", system, wave[0], columns, 2, heights, nil, nil)
    local sum = 0
    for k = 0, rows - 1 do sum = sum + points[k][2] end
    print(string.format("heights %.17g", sum))
    print(refusal(korvale.call, "equations_evaluate_rows", system, steep[0], columns, 1, heights, nil, nil))
    print(refusal(korvale.call, "equations_add", system, "z = x+", nil))
    korvale.free("korvale_equations", system)
    for _, callback in pairs({ripple, root, forget}) do callback:free() end
end

-- A cube whose corner has been pulled out, until this has been told of 20 steps.
local function relaxation()
    local cube = ffi.new("double[8][3]")
    for k = 0, 7 do
        cube[k] = {k % 2, math.floor(k / 2) % 2, math.floor(k / 4)}
    end
    local sizes = ffi.new("int32_t[6]", 4) -- one number fills all
    local corners = ffi.new("int32_t[24]", {0, 2, 3, 1, 4, 5, 7, 6, 0, 1, 5, 4, 2, 6, 7, 3, 0, 4, 6, 2, 1, 3, 7, 5})
    local faces = ffi.new("korvale_faces", {{data = cube, count = 8}, {data = sizes, count = 6}, {data = corners, count = 24}})
    local relaxer = korvale.make("korvale_relaxer", "relaxer_new", faces, nil)
    korvale.call("relaxer_keep", relaxer, library.KORVALE_LENGTHS, 0.1)
    local energy
    local tell = korvale.callback("int32_t (*)(int32_t, double, void*)", function(step, left)
        energy = left
        return step < 20
    end)
    local options = korvale.options("korvale_run_options", {progress = tell})
    local moving = ffi.new("korvale_points_out", {data = cube, count = 8})
    local came_to = ffi.new("korvale_relaxation")
    cube[7][2] = 1.5
    korvale.call("relaxer_run", relaxer, moving, options, came_to)
    tell:free()
    print(string.format("stopped after %d of %d steps at %.17g: %.17g", came_to.steps, options.steps, energy, cube[7][2]))
end

outlines()
rays()
equations()
relaxation()
