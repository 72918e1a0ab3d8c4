    if (dot(normal, normal) > 0.0)
        normal = normalize(normal);
    vec3 ortho = tangent - dot(tangent, normal) * normal;
    if (dot(ortho, ortho) > 0.0)
        tangent = normalize(ortho);
    vec3 rebuilt = cross(normal, tangent);
    bitangent = (dot(rebuilt, bitangent) < 0.0 ? -1.0 : 1.0) * rebuilt;
