// The built-in scenes, made procedurally.
#include "host/scene/builtin_scenes.h"

#include "host/scene/procedural_textures.h"
#include "host/scene/scene.h"
#include "host/scene/shapes.h"

#include <numbers>

namespace {

constexpr double kDegree = std::numbers::pi / 180.0;

// Colours with red in the low byte.
constexpr std::uint32_t Rgb8(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    return red | (green << 8) | (blue << 16);
}

MATRIX3D Placed(float x, float y, float z, double turnX = 0, double turnY = 0) {
    MATRIX3D m;
    if (turnX != 0 || turnY != 0) {
        MATRIX3D spin;
        spin.SetRotateX(turnX * kDegree);
        MATRIX3D turn;
        turn.SetRotateY(turnY * kDegree);
        m.SetMul(spin, turn);
    }
    m.Offset(POINT3D(x, y, z));
    return m;
}

std::size_t Plain(Scene& scene, const char* name, Rgb colour, float specular = 0.0f) {
    HostMaterial m;
    m.name = name;
    m.colour = colour;
    m.driver.diffuse[0] = colour.red;
    m.driver.diffuse[1] = colour.green;
    m.driver.diffuse[2] = colour.blue;
    m.specular = specular;
    return scene.AddMaterial(m);
}

std::size_t Textured(Scene& scene, const char* name, int slot, HostPicture* picture, Rgb colour) {
    const std::size_t index = Plain(scene, name, colour);
    scene.Material(index).driver.textures[slot] = picture;
    return index;
}

void AddGround(Scene& scene, float size, int cells) {
    HostPicture* checker =
        scene.Hold(MakeCheckerPicture(64, 2, Rgb8(236, 228, 210), Rgb8(92, 104, 128)));
    SceneObject ground;
    ground.name = "ground";
    ground.geometry = MakeGround(size, cells, size / 2);
    ground.material = Textured(scene, "checker", kSlotDiffuse, checker, {1, 1, 1});
    ground.framed = false;
    scene.AddObject(std::move(ground));
}

void BuildDemo(Scene& scene) {
    scene.background[0] = Rgb8(28, 36, 64);
    scene.background[1] = Rgb8(176, 188, 208);
    scene.yaw = 28;
    scene.pitch = 15;
    scene.fit = 0.85;
    AddGround(scene, 40, 24);

    SceneObject sphere;
    sphere.name = "sphere";
    sphere.geometry = MakeGeodesicSphere(1.0f, 4);
    sphere.placement = Placed(-1.7f, 1.0f, 0.2f);
    sphere.material = Plain(scene, "red gloss", {0.85f, 0.16f, 0.12f}, 0.55f);
    scene.AddObject(std::move(sphere));

    HostPicture* environment = scene.Hold(MakeEnvironmentPicture(128));
    SceneObject torus;
    torus.name = "torus";
    torus.geometry = MakeTorus(0.85f, 0.3f, 48, 20);
    torus.placement = Placed(1.2f, 1.2f, -0.9f, 72, -25);
    torus.material = Textured(scene, "chrome", kSlotReflection, environment, {0.9f, 0.92f, 1.0f});
    scene.AddObject(std::move(torus));

    SceneObject pillar;
    pillar.name = "pillar";
    pillar.geometry = MakeCylinder(0.5f, 2.2f, 12);
    pillar.placement = Placed(-0.6f, 1.1f, -2.6f);
    pillar.material = Plain(scene, "green", {0.35f, 0.72f, 0.3f}, 0.2f);
    pillar.outlined = true;
    scene.AddObject(std::move(pillar));

    SceneObject glass;
    glass.name = "glass";
    glass.geometry = MakeBox(1.3f, 1.3f, 1.3f);
    glass.placement = Placed(0.7f, 0.65f, 1.5f, 0, 35);
    glass.material = Plain(scene, "blue glass", {0.35f, 0.6f, 1.0f}, 0.4f);
    glass.opacity = 0.5f;
    scene.AddObject(std::move(glass));
}

// One textured, outlined box on a plain backdrop.
void BuildCube(Scene& scene) {
    scene.background[0] = scene.background[1] = Rgb8(40, 44, 52);
    scene.yaw = 35;
    scene.pitch = 28;
    HostPicture* checker =
        scene.Hold(MakeCheckerPicture(32, 4, Rgb8(250, 200, 60), Rgb8(200, 60, 40)));
    SceneObject box;
    box.name = "box";
    box.geometry = MakeBox(1, 1, 1);
    box.material = Textured(scene, "checker", kSlotDiffuse, checker, {1, 1, 1});
    box.outlined = true;
    scene.AddObject(std::move(box));
}

// The ground seen from low down, so it crosses the near plane and every side of the frame.
void BuildClip(Scene& scene) {
    scene.background[0] = Rgb8(20, 24, 40);
    scene.background[1] = Rgb8(120, 140, 170);
    scene.yaw = 10;
    scene.pitch = 12;
    AddGround(scene, 40, 20);
    SceneObject marker;
    marker.name = "marker";
    marker.geometry = MakeSphere(0.5f, 12, 20);
    marker.placement = Placed(0, 0.5f, 0);
    marker.material = Plain(scene, "orange", {0.95f, 0.55f, 0.15f}, 0.3f);
    scene.AddObject(std::move(marker));
}

// A half-transparent sphere in front of an opaque box, over a gradient.
void BuildGlass(Scene& scene) {
    scene.background[0] = Rgb8(250, 250, 250);
    scene.background[1] = Rgb8(90, 90, 110);
    scene.yaw = 20;
    scene.pitch = 15;
    SceneObject box;
    box.name = "box";
    box.geometry = MakeBox(1.6f, 1.6f, 0.4f);
    box.placement = Placed(0, 0, -0.8f);
    box.material = Plain(scene, "yellow", {0.95f, 0.85f, 0.2f});
    scene.AddObject(std::move(box));
    SceneObject ball;
    ball.name = "ball";
    ball.geometry = MakeSphere(0.7f, 16, 24);
    ball.placement = Placed(0.2f, 0, 0.4f);
    ball.material = Plain(scene, "blue glass", {0.2f, 0.4f, 1.0f}, 0.5f);
    ball.opacity = 0.5f;
    scene.AddObject(std::move(ball));
}

struct Entry {
    const char* name;
    void (*build)(Scene&);
};
constexpr Entry kScenes[] = {
    {"demo", BuildDemo},
    {"cube", BuildCube},
    {"clip", BuildClip},
    {"glass", BuildGlass},
};

} // namespace

const std::vector<std::string>& BuiltInSceneNames() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> n;
        for (const Entry& e : kScenes) n.emplace_back(e.name);
        return n;
    }();
    return names;
}

bool BuildBuiltInScene(const std::string& name, Scene& scene) {
    for (const Entry& e : kScenes) {
        if (name == e.name) {
            e.build(scene);
            return true;
        }
    }
    return false;
}
