#include "scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "burnt_in.h"

namespace vistel::demo {

namespace {

constexpr float farAway = 1000.0f;
constexpr float cameraHeight = 1.6f;

struct Vector {
    float x = 0, y = 0, z = 0;
};
Vector operator+(Vector a, Vector b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
Vector operator-(Vector a, Vector b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Vector operator*(Vector a, float k) { return {a.x * k, a.y * k, a.z * k}; }
float dot(Vector a, Vector b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Vector normalised(Vector a) { return a * (1 / std::sqrt(dot(a, a))); }

struct Ball {
    Vector centre;
    float radius = 1;
    Vector colour;  // 0..1
};
using Balls = std::array<Ball, 3>;

const Vector light = normalised({-0.5f, 0.8f, -0.45f});

// The balls go once round in the loop, bouncing.
Balls ballsAt(float turn) {
    Balls balls;
    const Vector colours[] = {{0.95f, 0.35f, 0.2f}, {0.2f, 0.75f, 0.45f}, {0.3f, 0.45f, 0.95f}};
    for (int i = 0; i < 3; ++i) {
        const float angle = 2 * std::numbers::pi_v<float> * (turn + i / 3.0f);
        const float radius = 0.75f - 0.12f * i;
        const float bounce = std::abs(std::sin(angle * (i + 1))) * 0.9f;
        balls[i] = {{2.1f * std::cos(angle), radius + bounce, 7 + 2.2f * std::sin(angle)},
                    radius,
                    colours[i]};
    }
    return balls;
}

float hitBall(const Ball& ball, Vector from, Vector along) {
    const Vector to = ball.centre - from;
    const float middle = dot(to, along);
    const float rest = ball.radius * ball.radius - (dot(to, to) - middle * middle);
    if (rest < 0) return farAway;
    const float distance = middle - std::sqrt(rest);
    return distance > 0.001f ? distance : farAway;
}

bool inShadow(const Balls& balls, Vector point) {
    return std::any_of(balls.begin(), balls.end(), [&](const Ball& ball) {
        return hitBall(ball, point + light * 0.01f, light) < farAway;
    });
}

Vector sky(Vector along) {
    const float up = std::clamp(along.y * 2.2f, 0.0f, 1.0f);
    return Vector{0.95f, 0.62f, 0.42f} * (1 - up) + Vector{0.18f, 0.24f, 0.45f} * up;
}

Vector floorColour(const Balls& balls, Vector point, float distance) {
    const bool light = (int(std::floor(point.x)) + int(std::floor(point.z))) & 1;
    const float lit = inShadow(balls, point) ? 0.35f : 1.0f;
    const float haze = std::clamp(distance / 40, 0.0f, 1.0f);
    return (light ? Vector{0.72f, 0.7f, 0.66f} : Vector{0.26f, 0.27f, 0.3f}) * (lit * (1 - haze)) +
           sky({0, 0, 1}) * haze;
}

Vector ballColour(const Balls& balls, const Ball& ball, Vector point, Vector along) {
    const Vector normal = normalised(point - ball.centre);
    const float lit = inShadow(balls, point) ? 0.0f : std::max(0.0f, dot(normal, light));
    const Vector mirrored = along - normal * (2 * dot(along, normal));
    const float shine = std::pow(std::max(0.0f, dot(mirrored, light)), 40.0f);
    return ball.colour * (0.18f + 0.82f * lit) + sky(mirrored) * 0.12f +
           Vector{1, 1, 1} * (0.8f * shine);
}

struct Sample {
    Vector colour;
    float depth = farAway;
    bool onBall = false;
};

Sample trace(const Balls& balls, Vector along) {
    const Vector eye{0, cameraHeight, 0};
    Sample sample{sky(along), farAway, false};
    if (along.y < -0.001f) {
        sample.depth = std::min(farAway, -cameraHeight / along.y);
        sample.colour = floorColour(balls, eye + along * sample.depth, sample.depth);
    }
    for (const Ball& ball : balls) {
        const float distance = hitBall(ball, eye, along);
        if (distance >= sample.depth) continue;
        sample = {ballColour(balls, ball, eye + along * distance, along), distance, true};
    }
    return sample;
}

uint32_t packed(const Sample& sample) {
    const auto byte = [](float v) { return uint32_t(std::clamp(v, 0.0f, 1.0f) * 255 + 0.5f); };
    return byte(sample.colour.x) | byte(sample.colour.y) << 8 | byte(sample.colour.z) << 16 |
           (sample.onBall ? 0xFF000000u : 0);
}

}  // namespace

Picture renderFrame(int number, int frames, int width, int height) {
    Picture picture{width, height, {}, {}};
    const Balls balls = ballsAt(float(number - 1) / frames);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Vector along = normalised(
                {(x - width / 2.0f) / height, (y - height / 2.0f) / height - 0.08f, 1.05f});
            const Sample sample = trace(balls, along);
            picture.colour.push_back(packed(sample));
            picture.depth.push_back(sample.depth);
        }
    }
    if ((number - 1) % framesPerSecond == 0) burnInFlash(picture);
    burnInNumber(picture, number);
    return picture;
}

}  // namespace vistel::demo
