    vec3 rebuilt = cross(normal, tangent);
    bitangent = (dot(rebuilt, bitangent) < 0.0 ? -1.0 : 1.0) * rebuilt;
